' Shows: a side of 0, which is the whole side to one method and nothing to the other.
Dim black As New Picture(8, 8, 32)
For y As Integer = 0 To 7
  For x As Integer = 0 To 7
    black.RGBSurface.Pixel(x, y) = &c010101
  Next
Next
Print Str(black.InvertQVR(0, 0, 0, 0).CountColorQVR(&cFEFEFE)) + " pixels inverted"
Print Str(black.InvertGrayQVR(0, 0, 0, 0).CountColorQVR(&cFEFEFE)) + " pixels inverted"
' Prints: 64 pixels inverted
' Prints: 0 pixels inverted
