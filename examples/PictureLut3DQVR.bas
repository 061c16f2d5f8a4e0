' Shows: red and blue exchanged by a table of 16 x 16 x 16 colours.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim lut As New PictureLut3DQVR
For r As Integer = 0 To 15
  For g As Integer = 0 To 15
    For b As Integer = 0 To 15
      lut.Table(r, g, b, 0) = 17 * b
      lut.Table(r, g, b, 1) = 17 * g
      lut.Table(r, g, b, 2) = 17 * r
    Next
  Next
Next
lut.SourcePicture = photo
If lut.Run Then
  lut.DestinationPicture.Save(GetFolderItem("PictureLut3DQVR.png"), Picture.SaveAsPNG)
End If
