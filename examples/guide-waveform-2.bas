' Shows: a tone made by a formula, in samples of 8 bits.
Dim tone As New MemoryBlock(8000)
For i As Integer = 0 To 7999
  Dim loudness As Double = 30 * (8000 - i) / 8000
  tone.Byte(i) = Round(128 + loudness * Sin(i * 0.05))
Next
Dim wave As Picture = RenderSamplesQVR(tone, 0, 1, 800, 200, 1)
wave.Save(GetFolderItem("guide-waveform-2.png"), Picture.SaveAsPNG)
