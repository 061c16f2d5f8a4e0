' Shows: more contrast with lifted shadows, then a little contrast with a cold cast.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim result As Picture = photo.ChangeContrastBrightnessLinearQVR(0.4, 60)
result.Save(GetFolderItem("ChangeContrastBrightnessLinearQVR.png"), Picture.SaveAsPNG)

Dim second As Picture = photo.ChangeContrastBrightnessLinearQVR(0.2, 0.2, 0.2, -40, 0, 60)
second.Save(GetFolderItem("ChangeContrastBrightnessLinearQVR-2.png"), Picture.SaveAsPNG)
