' Shows: a sepia tone with the offset of red given as the argument.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim value As Integer = Val(args(1))
Dim sepia As New PictureSepiaQVR
sepia.SourcePicture = photo
sepia.SepiaRed = value
sepia.SepiaGreen = 20
sepia.SepiaBlue = -20
Call sepia.Run
sepia.DestinationPicture.Save(GetFolderItem("slider-sepia.png"), Picture.SaveAsPNG)
