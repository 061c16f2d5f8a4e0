' Shows: a round cut-out of the photograph, before and after it is given a mask.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim badge As New Picture(160, 160, 32)
For y As Integer = 0 To 159
  Dim py As Integer = y * photo.Height \ 160
  For x As Integer = 0 To 159
    Dim px As Integer = x * photo.Width \ 160
    badge.RGBSurface.Pixel(x, y) = photo.RGBSurface.Pixel(px, py)
  Next
Next
badge.Save(GetFolderItem("HasMaskQVR-before.png"), Picture.SaveAsPNG)
If Not badge.HasMaskQVR Then
  Print "No mask yet"
End If

' White in a mask is transparent, black opaque.
Dim disc As New Picture(160, 160, 32)
For y As Integer = 0 To 159
  For x As Integer = 0 To 159
    If (x - 80) ^ 2 + (y - 80) ^ 2 < 75 * 75 Then
      disc.RGBSurface.Pixel(x, y) = &c000000
    End If
  Next
Next
badge.Mask = disc
badge.Save(GetFolderItem("HasMaskQVR.png"), Picture.SaveAsPNG)
If badge.HasMaskQVR Then
  Print "Now there is one"
End If
' Prints: No mask yet
' Prints: Now there is one
