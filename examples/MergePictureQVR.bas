' Shows: a double exposure: the lighter of the photograph and a copy moved to the right, channel by channel.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim moved As Picture = photo.ChangeCustomQVR(1, 0)
Call moved.ScrollHorizontalQVR(photo.Width \ 3, True, False)
Dim result As Picture = MergePictureQVR(photo, moved)
result.Save(GetFolderItem("MergePictureQVR.png"), Picture.SaveAsPNG)
