' Shows: a red dot near the top, which is found in the rows below it.
Dim page As New Picture(8, 8, 32)
page.RGBSurface.Pixel(1, 1) = &cFF0000
' Asked for rows 4 to 7, where nothing has colour.
Dim mask As Picture = page.ExtractColorRectangleMaskQVR(0, 4, 8, 4)
If mask.isBlackQVR(1, 5, 1, 1) Then
  Print "Found at 1, 5"
End If
Print Str(mask.CountColorQVR(&c000000)) + " black pixel"
' Prints: Found at 1, 5
' Prints: 1 black pixel
