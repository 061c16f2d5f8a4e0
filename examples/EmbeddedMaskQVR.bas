' Shows: a photograph that fades out to the right, and its alpha bytes read back the other way round.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
' One row is enough: below its last row a mask repeats its first.
Dim fade As New Picture(photo.Width, 1, 32)
For x As Integer = 0 To photo.Width - 1
  Dim level As Integer = 255 - 255 * x \ photo.Width
  fade.RGBSurface.Pixel(x, 0) = RGB(level, level, level)
Next
photo.EmbeddedMaskQVR(False) = fade
photo.Save(GetFolderItem("EmbeddedMaskQVR.png"), Picture.SaveAsPNG)
Dim result As Picture = photo.EmbeddedMaskQVR(True)
result.Save(GetFolderItem("EmbeddedMaskQVR-2.png"), Picture.SaveAsPNG)
