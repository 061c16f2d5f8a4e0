' Shows: every channel moved towards white in proportion, then a cold cast with less red and more blue.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim result As Picture = photo.ChangeBrightnessLinearQVR(100)
result.Save(GetFolderItem("ChangeBrightnessLinearQVR.png"), Picture.SaveAsPNG)

Dim second As Picture = photo.ChangeBrightnessLinearQVR(-60, 0, 90)
second.Save(GetFolderItem("ChangeBrightnessLinearQVR-2.png"), Picture.SaveAsPNG)
