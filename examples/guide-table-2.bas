' Shows: colours kept where they are red, and turned grey everywhere else.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim lut As New PictureLut3DQVR
For r As Integer = 0 To 15
  For g As Integer = 0 To 15
    For b As Integer = 0 To 15
      Dim grey As Double = 17 * (r + 2 * g + b) / 4
      Dim redness As Double = Min(1, Max(0, r - Max(g, b)) / 3)
      lut.Table(r, g, b, 0) = grey + (17 * r - grey) * redness
      lut.Table(r, g, b, 1) = grey + (17 * g - grey) * redness
      lut.Table(r, g, b, 2) = grey + (17 * b - grey) * redness
    Next
  Next
Next
lut.SourcePicture = photo
If lut.Run Then
  lut.DestinationPicture.Save(GetFolderItem("guide-table-2.png"), Picture.SaveAsPNG)
End If
