' Shows: the share of coloured pixels in a picture of four, and in a photograph turned grey.
Dim sample As New Picture(4, 1, 32)
sample.RGBSurface.Pixel(0, 0) = &cFF0000
sample.RGBSurface.Pixel(1, 0) = &c6464C8
sample.RGBSurface.Pixel(2, 0) = &c1D001D
' The third pixel is too dark to count; the fourth is white.
Print Str(sample.ColornessQVR)
Print Str(sample.ColornessQVR(100))

Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim grey As Picture = photo.ChangeSaturationQVR(-255)
grey.Save(GetFolderItem("ColornessQVR.png"), Picture.SaveAsPNG)
Print Str(grey.ColornessQVR)
' Prints: 0.5
' Prints: 0.25
' Prints: 0
