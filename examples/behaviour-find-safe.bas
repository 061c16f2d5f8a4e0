' Shows: a search whose answer is checked: the place found is compared with the picture.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim left As Integer = photo.Width \ 3
Dim top As Integer = photo.Height \ 3
Dim piece As New Picture(30, 20, 32)
For row As Integer = 0 To 19
  For column As Integer = 0 To 29
    piece.RGBSurface.Pixel(column, row) = photo.RGBSurface.Pixel(left + column, top + row)
  Next
Next

Dim x, y As Integer
Dim found As Boolean = photo.FindPictureQVR(piece, x, y)
If found Then
  For row As Integer = 0 To 19
    For column As Integer = 0 To 29
      Dim c As Color = photo.RGBSurface.Pixel(x + column, y + row)
      If piece.RGBSurface.Pixel(column, row) <> c Then
        found = False
      End If
    Next
  Next
End If
If found Then
  Print "Found, and checked"
End If
' Prints: Found, and checked
