' Shows: green taken from the negative of the photograph.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim result As Picture = photo.ReplaceGreenChannelQVR(photo.InvertQVR)
result.Save(GetFolderItem("ReplaceGreenChannelQVR.png"), Picture.SaveAsPNG)
