' Shows: an empty table, which is black, and one that should change nothing and makes 57 a 56.
Dim dot As New Picture(1, 1, 32)
dot.RGBSurface.Pixel(0, 0) = RGB(57, 57, 57)
Dim lut As New PictureLut3DQVR
lut.SourcePicture = dot
Call lut.Run
Print "Empty: " + Str(lut.DestinationPicture.RGBSurface.Pixel(0, 0).Red)

For r As Integer = 0 To 15
  For g As Integer = 0 To 15
    For b As Integer = 0 To 15
      lut.Table(r, g, b, 0) = 17 * r
      lut.Table(r, g, b, 1) = 17 * g
      lut.Table(r, g, b, 2) = 17 * b
    Next
  Next
Next
Call lut.Run
Print "57 becomes " + Str(lut.DestinationPicture.RGBSurface.Pixel(0, 0).Red)
dot.RGBSurface.Pixel(0, 0) = RGB(51, 51, 51)
Call lut.Run
Print "51 becomes " + Str(lut.DestinationPicture.RGBSurface.Pixel(0, 0).Red)
' Prints: Empty: 0
' Prints: 57 becomes 56
' Prints: 51 becomes 51
