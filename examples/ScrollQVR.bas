' Shows: a round cut-out moved right and down with wrap-around; its mask moves along.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim badge As New Picture(160, 160, 32)
Dim disc As New Picture(160, 160, 32)
For y As Integer = 0 To 159
  Dim py As Integer = y * photo.Height \ 160
  For x As Integer = 0 To 159
    Dim px As Integer = x * photo.Width \ 160
    badge.RGBSurface.Pixel(x, y) = photo.RGBSurface.Pixel(px, py)
    If (x - 80) ^ 2 + (y - 80) ^ 2 < 75 * 75 Then
      disc.RGBSurface.Pixel(x, y) = &c000000
    End If
  Next
Next
badge.Mask = disc
badge.Save(GetFolderItem("ScrollQVR-before.png"), Picture.SaveAsPNG)
If badge.ScrollQVR(40, 24, True, True) Then
  badge.Save(GetFolderItem("ScrollQVR.png"), Picture.SaveAsPNG)
End If
