' Shows: every channel 1.6 times as far from 127, then a contrast of its own for each channel.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim result As Picture = photo.ChangeContrastQVR(0.6)
result.Save(GetFolderItem("ChangeContrastQVR.png"), Picture.SaveAsPNG)

Dim second As Picture = photo.ChangeContrastQVR(0.8, 0, -0.6)
second.Save(GetFolderItem("ChangeContrastQVR-2.png"), Picture.SaveAsPNG)
