' Shows: a negative by c * -1 + 255, then a flat, pale copy by c * 0.5 + 110.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim result As Picture = photo.ChangeCustomQVR(-1, 255)
result.Save(GetFolderItem("ChangeCustomQVR.png"), Picture.SaveAsPNG)

Dim second As Picture = photo.ChangeCustomQVR(0.5, 110)
second.Save(GetFolderItem("ChangeCustomQVR-2.png"), Picture.SaveAsPNG)
