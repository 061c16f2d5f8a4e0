' Shows: alpha bytes made from the picture itself: what is light becomes transparent.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim grey As Picture = TintPictureQVR(photo, &c4C961D, &cFFFFFF)
Dim ink As Picture = TintPictureQVR(photo, &c000000, &c000000)
' The darker the photograph, the more opaque the ink.
ink.EmbeddedMaskQVR(True) = grey
ink.Save(GetFolderItem("guide-alpha.png"), Picture.SaveAsPNG)
