' Shows: how many pixels of a chessboard are white, and how many are red.
Dim board As New Picture(64, 64, 32)
For y As Integer = 0 To 63
  For x As Integer = 0 To 63
    If (x \ 8 + y \ 8) Mod 2 = 1 Then
      board.RGBSurface.Pixel(x, y) = &c000000
    End If
  Next
Next
board.Save(GetFolderItem("CountColorQVR.png"), Picture.SaveAsPNG)
Print Str(board.CountColorQVR(&cFFFFFF)) + " pixels are white"
Print Str(board.CountColorQVR(&cFF0000)) + " pixels are red"
' Prints: 2048 pixels are white
' Prints: 0 pixels are red
