' Shows: the orders side by side: counts come as red, green, blue, while tables and pictures go in as red, blue, green.
Dim dot As New Picture(1, 1, 32)
dot.RGBSurface.Pixel(0, 0) = RGB(10, 20, 30)

Dim first, second, third As MemoryBlock
Dim count As Integer
dot.CountColorsQVR(first, second, third, count)
Print Str(first.UInt32Value(10 * 4)) + " pixel of red 10 in the first"
Print Str(second.UInt32Value(20 * 4)) + " pixel of green 20 in the second"
Print Str(third.UInt32Value(30 * 4)) + " pixel of blue 30 in the third"

' A table of zeros in second place takes blue away.
Dim same As New MemoryBlock(256)
For level As Integer = 0 To 255
  same.Byte(level) = level
Next
Dim zeros As New MemoryBlock(256)
Dim c As Color = dot.TransformColorsQVR(same, zeros, same).RGBSurface.Pixel(0, 0)
Print "Table: " + Str(c.Red) + ", " + Str(c.Green) + ", " + Str(c.Blue)

' So does a black picture in second place.
Dim black As Picture = dot.ChangeCustomQVR(0, 0)
c = CombinePicturesQVR(dot, black, dot).RGBSurface.Pixel(0, 0)
Print "Combined: " + Str(c.Red) + ", " + Str(c.Green) + ", " + Str(c.Blue)
' Prints: 1 pixel of red 10 in the first
' Prints: 1 pixel of green 20 in the second
' Prints: 1 pixel of blue 30 in the third
' Prints: Table: 10, 20, 0
' Prints: Combined: 10, 20, 0
