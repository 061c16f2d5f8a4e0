' Shows: what zeros mean in the place of a count, a width and a height, and two calls that give no picture.
Dim samples As New MemoryBlock(300)
For i As Integer = 0 To 299
  samples.Byte(i) = 128
Next
Dim wave As Picture = RenderSamplesQVR(samples, 0, 1, 0, 0, 0)
Print Str(wave.Width) + " columns, " + Str(wave.Height) + " rows"
' The same bytes as sound of 16 bits, whose name in Bits is 15.
wave = RenderSamplesQVR(samples, 0, 1, 0, 0, 0, &cFFFFFF, &c000000, &c000000, 15)
Print Str(wave.Width) + " columns of 16 bits"
If RenderSamplesQVR(samples, 0, 1, 0, 0, 0, &cFFFFFF, &c000000, &c000000, 12) = Nil Then
  Print "12 bits: no picture"
End If
If RenderSamplesQVR(samples, 301, 1, 0, 0, 0) = Nil Then
  Print "More samples than there are: no picture"
End If
' Prints: 300 columns, 500 rows
' Prints: 150 columns of 16 bits
' Prints: 12 bits: no picture
' Prints: More samples than there are: no picture
