' Shows: the white parts of a poster as dark shapes on amber.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim poster As Picture = photo.ChangeContrastQVR(100)
poster.Save(GetFolderItem("ExtractColorQVR-before.png"), Picture.SaveAsPNG)
Dim result As Picture = poster.ExtractColorQVR(&cFFFFFF, &c202020, &cFFD166)
result.Save(GetFolderItem("ExtractColorQVR.png"), Picture.SaveAsPNG)
