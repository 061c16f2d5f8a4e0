' Shows: the classic brown of old photographs, then grey levels without the channel green.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim sepia As New PictureSepiaQVR
sepia.SourcePicture = photo
sepia.SepiaRed = 40
sepia.SepiaGreen = 20
sepia.SepiaBlue = -20
If sepia.Run Then
  sepia.DestinationPicture.Save(GetFolderItem("PictureSepiaQVR.png"), Picture.SaveAsPNG)
End If

Dim red As New PictureSepiaQVR
red.SourcePicture = photo
red.FactorRed = 0.8
red.FactorBlue = 0 ' the weight of green
If red.Run Then
  red.DestinationPicture.Save(GetFolderItem("PictureSepiaQVR-2.png"), Picture.SaveAsPNG)
End If
