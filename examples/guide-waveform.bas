' Shows: a sound of 16 bits as a waveform, scaled to its loudest part.
Dim voice As MemoryBlock = OpenSamples(GetFolderItem("speech.wav"))
Dim wave As Picture
wave = RenderSamplesQVR(voice, 0, 1, 800, 200, 1, &cFFFFFF, &c7FA7C9, &c1E3A5F, 15, True)
wave.Save(GetFolderItem("guide-waveform.png"), Picture.SaveAsPNG)
