' Shows: the white of a poster replaced by navy blue.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim poster As Picture = photo.ChangeContrastQVR(100)
poster.Save(GetFolderItem("ReplaceColorQVR-before.png"), Picture.SaveAsPNG)
Dim result As Picture = poster.ReplaceColorQVR(&cFFFFFF, &c1E3A5F)
result.Save(GetFolderItem("ReplaceColorQVR.png"), Picture.SaveAsPNG)
