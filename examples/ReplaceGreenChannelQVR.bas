' Shows: green taken from the negative of the photograph.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
photo.ReplaceGreenChannelQVR(photo.InvertQVR).Save(GetFolderItem("ReplaceGreenChannelQVR.png"), Picture.SaveAsPNG)
