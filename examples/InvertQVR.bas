' Shows: a photograph as a negative, whole and in the middle only.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
photo.InvertQVR.Save(GetFolderItem("InvertQVR.png"), Picture.SaveAsPNG)

Dim w As Integer = photo.Width
Dim h As Integer = photo.Height
Dim result As Picture = photo.InvertQVR(w \ 4, h \ 4, w \ 2, h \ 2)
result.Save(GetFolderItem("InvertQVR-2.png"), Picture.SaveAsPNG)
