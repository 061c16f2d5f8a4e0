' Shows: black and white exchanged on a poster of a few plain colours, while the colours stay.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim poster As Picture = photo.ChangeContrastQVR(100)
poster.Save(GetFolderItem("InvertGrayQVR-before.png"), Picture.SaveAsPNG)
poster.InvertGrayQVR.Save(GetFolderItem("InvertGrayQVR.png"), Picture.SaveAsPNG)

Dim w As Integer = photo.Width
Dim h As Integer = photo.Height
Dim result As Picture = poster.InvertGrayQVR(w \ 4, h \ 4, w \ 2, h \ 2)
result.Save(GetFolderItem("InvertGrayQVR-2.png"), Picture.SaveAsPNG)
