' Shows: stronger colours, then the same photograph in grey.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim result As Picture = photo.ChangeSaturationQVR(150)
result.Save(GetFolderItem("ChangeSaturationQVR.png"), Picture.SaveAsPNG)

Dim second As Picture = photo.ChangeSaturationQVR(-255)
second.Save(GetFolderItem("ChangeSaturationQVR-2.png"), Picture.SaveAsPNG)
