' Shows: several steps in one line, each on the result of the one before.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim result As Picture
result = photo.ChangeContrastQVR(0.3).ChangeSaturationQVR(-120).ChangeBrightnessLinearQVR(30)
result.Save(GetFolderItem("guide-chain.png"), Picture.SaveAsPNG)
