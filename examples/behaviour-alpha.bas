' Shows: a result with neither the mask nor the alpha bytes of its source, and scrolling that keeps both.
Dim badge As New Picture(2, 1, 32)
Dim mask As New Picture(2, 1, 32)
mask.RGBSurface.Pixel(1, 0) = &c000000
badge.Mask = mask
Dim clear As New Picture(2, 1, 32)
clear.RGBSurface.Pixel(0, 0) = &c000000
clear.RGBSurface.Pixel(1, 0) = &c000000
badge.EmbeddedMaskQVR(False) = clear

Dim result As Picture = badge.ChangeContrastQVR(0)
If Not result.HasMaskQVR Then
  Print "The result has no mask"
End If
Dim before As Picture = badge.EmbeddedMaskQVR(False)
Dim after As Picture = result.EmbeddedMaskQVR(False)
If before.isBlackQVR And after.isWhiteQVR Then
  Print "The source was transparent, the result is opaque"
End If
Call badge.ScrollHorizontalQVR(1, True, True)
after = badge.EmbeddedMaskQVR(False)
If badge.Mask.RGBSurface.Pixel(1, 0) = &cFFFFFF And after.isBlackQVR Then
  Print "Scrolling moved the mask and kept the alpha bytes"
End If
' Prints: The result has no mask
' Prints: The source was transparent, the result is opaque
' Prints: Scrolling moved the mask and kept the alpha bytes
