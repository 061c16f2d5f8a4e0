' Shows: more contrast and then 40 less in every channel, then strong warm reds.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim result As Picture = photo.ChangeContrastBrightnessAbsoluteQVR(0.4, -40)
result.Save(GetFolderItem("ChangeContrastBrightnessAbsoluteQVR.png"), Picture.SaveAsPNG)

Dim second As Picture = photo.ChangeContrastBrightnessAbsoluteQVR(0.5, 0.2, 0, 30, 0, -30)
second.Save(GetFolderItem("ChangeContrastBrightnessAbsoluteQVR-2.png"), Picture.SaveAsPNG)
