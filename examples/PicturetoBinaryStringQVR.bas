' Shows: how long the string of a picture is: a header of 40 bytes, and three bytes for each pixel.
Dim dot As New Picture(1, 1, 32)
Print Str(LenB(PicturetoBinaryStringQVR(dot))) + " bytes for one pixel"

Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim data As String = PicturetoBinaryStringQVR(photo)
If LenB(data) = 40 + 3 * photo.Width * photo.Height Then
  Print "The photograph's string is as long as expected"
End If
' Prints: 43 bytes for one pixel
' Prints: The photograph's string is as long as expected
