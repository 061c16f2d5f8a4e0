' Shows: the plain average as grey, then a warm paper tone, then the red channel alone in light blue.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
TintPictureQVR(photo, &c555555, &cFFFFFF).Save(GetFolderItem("TintPictureQVR.png"), Picture.SaveAsPNG)
TintPictureQVR(photo, &c4C961D, &cFFE0B0).Save(GetFolderItem("TintPictureQVR-2.png"), Picture.SaveAsPNG)
TintPictureQVR(photo, &cFF0000, &c80C0FF).Save(GetFolderItem("TintPictureQVR-3.png"), Picture.SaveAsPNG)
