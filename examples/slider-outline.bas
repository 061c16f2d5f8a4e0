' Shows: a waveform with an outline as wide as the argument says.
Dim value As Integer = Val(args(1))
Dim voice As MemoryBlock = OpenSamples(GetFolderItem("speech.wav"))
Dim wave As Picture
wave = RenderSamplesQVR(voice, 0, 1, 800, 200, value, &c88B5C4, &c274C5A, &c203F4E, 15, True)
wave.Save(GetFolderItem("slider-outline.png"), Picture.SaveAsPNG)
