' Shows: black rectangles over the cut-outs of a page that have colour; the grey ones in the middle do not count.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim page As New Picture(240, 160, 32)
For y As Integer = 0 To 159
  For x As Integer = 0 To 239
    If (x Mod 80 - 40) ^ 2 + (y Mod 80 - 40) ^ 2 < 900 Then
      Dim px As Integer = x * photo.Width \ 240
      Dim py As Integer = y * photo.Height \ 160
      Dim c As Color = photo.RGBSurface.Pixel(px, py)
      If x \ 80 = 1 Then
        c = RGB(c.Green, c.Green, c.Green)
      End If
      page.RGBSurface.Pixel(x, y) = c
    End If
  Next
Next

page.Save(GetFolderItem("ExtractColorRectangleMaskQVR-before.png"), Picture.SaveAsPNG)
Dim result As Picture = page.ExtractColorRectangleMaskQVR
result.Save(GetFolderItem("ExtractColorRectangleMaskQVR.png"), Picture.SaveAsPNG)
' Only the left third is looked at.
Dim left As Picture = page.ExtractColorRectangleMaskQVR(0, 0, 80, -1)
left.Save(GetFolderItem("ExtractColorRectangleMaskQVR-2.png"), Picture.SaveAsPNG)
