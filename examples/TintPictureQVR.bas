' Shows: the plain average as grey, then a warm paper tone, then the red channel alone in light blue.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim result As Picture = TintPictureQVR(photo, &c555555, &cFFFFFF)
result.Save(GetFolderItem("TintPictureQVR.png"), Picture.SaveAsPNG)

Dim second As Picture = TintPictureQVR(photo, &c4C961D, &cFFE0B0)
second.Save(GetFolderItem("TintPictureQVR-2.png"), Picture.SaveAsPNG)

Dim third As Picture = TintPictureQVR(photo, &cFF0000, &c80C0FF)
third.Save(GetFolderItem("TintPictureQVR-3.png"), Picture.SaveAsPNG)
