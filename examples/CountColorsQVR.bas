' Shows: how often each level from 0 to 255 occurs in red, green and blue, drawn as a chart.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim red, blue, green As MemoryBlock
Dim count As Integer
photo.CountColorsQVR(red, blue, green, count)
If count = photo.Width * photo.Height Then
  Print "Every pixel was counted"
End If

' The block passed second holds the counts of green, the third those of blue.
Dim most As Double = 1
For level As Integer = 1 To 254
  most = Max(most, red.UInt32Value(level * 4))
  most = Max(most, blue.UInt32Value(level * 4))
  most = Max(most, green.UInt32Value(level * 4))
Next

Dim chart As New Picture(256, 120, 32)
For level As Integer = 0 To 255
  For y As Integer = 0 To 119
    Dim least As Double = most * (120 - y) / 120
    Dim r, g, b As Integer = 32
    If red.UInt32Value(level * 4) >= least Then r = 255
    If blue.UInt32Value(level * 4) >= least Then g = 255
    If green.UInt32Value(level * 4) >= least Then b = 255
    chart.RGBSurface.Pixel(level, y) = RGB(r, g, b)
  Next
Next
chart.Save(GetFolderItem("CountColorsQVR.png"), Picture.SaveAsPNG)
' Prints: Every pixel was counted
