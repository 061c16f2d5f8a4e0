' Shows: alpha bytes kept over an operation.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
photo.EmbeddedMaskQVR(False) = TintPictureQVR(photo, &c4C961D, &cFFFFFF)
Dim alpha As Picture = photo.EmbeddedMaskQVR(False)

Dim negative As Picture = photo.InvertQVR
negative.EmbeddedMaskQVR(False) = alpha
negative.Save(GetFolderItem("guide-alpha-2.png"), Picture.SaveAsPNG)
