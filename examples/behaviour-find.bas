' Shows: a search that reports a place where the picture is not.
' A field of four by three: all black on top, black at both ends below, and a white row.
Dim field As New Picture(4, 3, 32)
For x As Integer = 0 To 3
  field.RGBSurface.Pixel(x, 0) = &c000000
Next
field.RGBSurface.Pixel(0, 1) = &c000000
field.RGBSurface.Pixel(3, 1) = &c000000
' Two black pixels above two white ones. In the field they are at 1, 0.
Dim piece As New Picture(2, 2, 32)
piece.RGBSurface.Pixel(0, 0) = &c000000
piece.RGBSurface.Pixel(1, 0) = &c000000

Dim x, y As Integer
If field.FindPictureQVR(piece, x, y) Then
  Print "Reported at " + Str(x) + ", " + Str(y)
End If
' At 0, 0 the first row matched and the second did not, which is what upsets the search.
' Prints: Reported at 2, 0
