' Shows: an S-shaped tone curve for all channels, then blue through an inverting table.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim curve As New MemoryBlock(256)
Dim negative As New MemoryBlock(256)
Dim same As New MemoryBlock(256)
For level As Integer = 0 To 255
  Dim x As Double = level / 255
  curve.Byte(level) = Round(255 * x * x * (3 - 2 * x))
  negative.Byte(level) = 255 - level
  same.Byte(level) = level
Next
' The tables are passed in the order red, blue, green.
Dim result As Picture = photo.TransformColorsQVR(curve, curve, curve)
result.Save(GetFolderItem("TransformColorsQVR.png"), Picture.SaveAsPNG)

Dim second As Picture = photo.TransformColorsQVR(curve, negative, same)
second.Save(GetFolderItem("TransformColorsQVR-2.png"), Picture.SaveAsPNG)
