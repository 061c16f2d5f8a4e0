' Shows: red taken from a copy that was moved to the right.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim moved As Picture = photo.ChangeCustomQVR(1, 0)
Call moved.ScrollHorizontalQVR(photo.Width \ 20, True, False)
Dim result As Picture = photo.ReplaceRedChannelQVR(moved)
result.Save(GetFolderItem("ReplaceRedChannelQVR.png"), Picture.SaveAsPNG)
