' Shows: black where a pixel counts as coloured with the threshold given as the argument, white elsewhere.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim value As Integer = Val(args(1))
Dim map As New Picture(150, 100, 32)
Dim dot As New Picture(1, 1, 32)
For y As Integer = 0 To 99
  For x As Integer = 0 To 149
    Dim px As Integer = x * photo.Width \ 150
    Dim py As Integer = y * photo.Height \ 100
    dot.RGBSurface.Pixel(0, 0) = photo.RGBSurface.Pixel(px, py)
    If dot.ColornessQVR(value) > 0 Then
      map.RGBSurface.Pixel(x, y) = &c000000
    End If
  Next
Next
map.Save(GetFolderItem("slider-threshold.png"), Picture.SaveAsPNG)
