' Shows: a brightness of 300, which wraps in one method and is clamped in the others.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
photo.ChangeBrightnessLinearQVR(300).Save(GetFolderItem("behaviour-wrap.png"), Picture.SaveAsPNG)
photo.ChangeBrightnessAbsoluteQVR(300).Save(GetFolderItem("behaviour-wrap-2.png"), Picture.SaveAsPNG)

Dim dot As New Picture(1, 1, 32)
dot.RGBSurface.Pixel(0, 0) = &c000000
Print "Linear: " + Str(dot.ChangeBrightnessLinearQVR(300).RGBSurface.Pixel(0, 0).Red)
Print "Absolute: " + Str(dot.ChangeBrightnessAbsoluteQVR(300).RGBSurface.Pixel(0, 0).Red)
' The one with contrast clamps too.
Print "With contrast: " + Str(dot.ChangeContrastBrightnessLinearQVR(0, 300).RGBSurface.Pixel(0, 0).Red)
' Prints: Linear: 44
' Prints: Absolute: 255
' Prints: With contrast: 255
