' Shows: a red picture in which an empty rectangle is white, black and grey.
Dim red As New Picture(8, 8, 32)
For y As Integer = 0 To 7
  For x As Integer = 0 To 7
    red.RGBSurface.Pixel(x, y) = &cFF0000
  Next
Next
If red.isWhiteQVR(2, 2, 0, 4) And red.isBlackQVR(2, 2, 0, 4) Then
  Print "Nothing is white and black"
End If
If red.isGrayQVR(0, 2, 2, 0, 4) Then
  Print "And it is grey"
End If
If red.isWhiteQVR(100, 0, 4, 4) And red.isBlackQVR(100, 0, 4, 4) Then
  Print "So is what lies outside"
End If
' A negative side means the picture's: this is all of it.
If Not red.isWhiteQVR(0, 0, -1, -1) Then
  Print "The picture itself is not white"
End If
' Prints: Nothing is white and black
' Prints: And it is grey
' Prints: So is what lies outside
' Prints: The picture itself is not white
