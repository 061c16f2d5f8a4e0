' Shows: a mask that goes along by hand, since results never have one.
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
badge.Save(GetFolderItem("guide-mask-before.png"), Picture.SaveAsPNG)

Dim negative As Picture = badge.InvertQVR
If Not negative.HasMaskQVR Then
  Print "The result has no mask"
End If
' A copy, so that the two do not share one.
negative.Mask = badge.Mask.ChangeCustomQVR(1, 0)
negative.Save(GetFolderItem("guide-mask.png"), Picture.SaveAsPNG)
' Prints: The result has no mask
