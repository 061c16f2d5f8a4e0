' Shows: a waveform smoothed as much as the argument says.
Dim value As Integer = Val(args(1))
Dim voice As MemoryBlock = OpenSamples(GetFolderItem("speech.wav"))
Dim wave As Picture
wave = RenderSamplesQVR(voice, 0, value, 800, 200, 1, &c88B5C4, &c274C5A, &c203F4E, 15, True)
wave.Save(GetFolderItem("slider-smooth.png"), Picture.SaveAsPNG)
