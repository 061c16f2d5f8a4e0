' Shows: how the white margin of a page is measured.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
' One level darker, so that nothing but the margin is white.
Dim dark As Picture = photo.ChangeBrightnessAbsoluteQVR(-1)
Dim page As Picture = dark.InvertQVR.InvertQVR(16, 16, photo.Width - 32, photo.Height - 32)
page.Save(GetFolderItem("isWhiteQVR.png"), Picture.SaveAsPNG)

Dim margin As Integer = 0
While page.isWhiteQVR(margin, 0, 1, page.Height)
  margin = margin + 1
Wend
Print "The margin is " + Str(margin) + " pixels wide"
If Not page.isWhiteQVR Then
  Print "The page is not white"
End If
' Prints: The margin is 16 pixels wide
' Prints: The page is not white
