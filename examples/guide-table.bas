' Shows: a film look from a formula: cold shadows, warm lights and strong contrast.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim lut As New PictureLut3DQVR
For r As Integer = 0 To 15
  For g As Integer = 0 To 15
    For b As Integer = 0 To 15
      ' From 0 to 1, bent into an S.
      Dim x As Double = r / 15
      Dim y As Double = g / 15
      Dim z As Double = b / 15
      lut.Table(r, g, b, 0) = 255 * 1.12 * x * x * (3 - 2 * x)
      lut.Table(r, g, b, 1) = 255 * y * y * (3 - 2 * y) + 12 * (1 - y)
      lut.Table(r, g, b, 2) = 255 * 0.82 * z * z * (3 - 2 * z) + 34 * (1 - z)
    Next
  Next
Next
lut.SourcePicture = photo
If lut.Run Then
  lut.DestinationPicture.Save(GetFolderItem("guide-table.png"), Picture.SaveAsPNG)
End If
