' Shows: a brightness of 300, which wraps in one method and is clamped in the others.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim result As Picture = photo.ChangeBrightnessLinearQVR(300)
result.Save(GetFolderItem("behaviour-wrap.png"), Picture.SaveAsPNG)

Dim second As Picture = photo.ChangeBrightnessAbsoluteQVR(300)
second.Save(GetFolderItem("behaviour-wrap-2.png"), Picture.SaveAsPNG)

Dim dot As New Picture(1, 1, 32)
dot.RGBSurface.Pixel(0, 0) = &c000000
Print "Linear: " + Str(dot.ChangeBrightnessLinearQVR(300).RGBSurface.Pixel(0, 0).Red)
Print "Absolute: " + Str(dot.ChangeBrightnessAbsoluteQVR(300).RGBSurface.Pixel(0, 0).Red)
' The one with contrast clamps too.
Dim c As Color = dot.ChangeContrastBrightnessLinearQVR(0, 300).RGBSurface.Pixel(0, 0)
Print "With contrast: " + Str(c.Red)
' Prints: Linear: 44
' Prints: Absolute: 255
' Prints: With contrast: 255
