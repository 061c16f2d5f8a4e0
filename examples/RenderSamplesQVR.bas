' Shows: a voice as bars only, with a thin outline, and smoothed with a wide one.
Dim voice As MemoryBlock = OpenSamples(GetFolderItem("speech.wav"))
Dim wave As Picture
wave = RenderSamplesQVR(voice, 0, 1, 800, 200, 0, &c88B5C4, &c274C5A, &c203F4E, 15, True)
wave.Save(GetFolderItem("RenderSamplesQVR.png"), Picture.SaveAsPNG)
wave = RenderSamplesQVR(voice, 0, 1, 800, 200, 1, &c88B5C4, &c274C5A, &c203F4E, 15, True)
wave.Save(GetFolderItem("RenderSamplesQVR-2.png"), Picture.SaveAsPNG)
wave = RenderSamplesQVR(voice, 0, 12, 800, 200, 3, &c88B5C4, &c274C5A, &c203F4E, 15, True)
wave.Save(GetFolderItem("RenderSamplesQVR-3.png"), Picture.SaveAsPNG)
