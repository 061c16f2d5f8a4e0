' Shows: 60 added to every channel, then a warm cast by adding to red and taking from blue.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim result As Picture = photo.ChangeBrightnessAbsoluteQVR(60)
result.Save(GetFolderItem("ChangeBrightnessAbsoluteQVR.png"), Picture.SaveAsPNG)

Dim second As Picture = photo.ChangeBrightnessAbsoluteQVR(60, 0, -60)
second.Save(GetFolderItem("ChangeBrightnessAbsoluteQVR-2.png"), Picture.SaveAsPNG)
