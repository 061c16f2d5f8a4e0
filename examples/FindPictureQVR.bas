' Shows: where in the photograph a piece of it lies.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim left As Integer = photo.Width * 5 \ 8
Dim top As Integer = photo.Height * 2 \ 5
Dim piece As New Picture(Min(64, photo.Width \ 6), Min(64, photo.Height \ 5), 32)
For row As Integer = 0 To piece.Height - 1
  For column As Integer = 0 To piece.Width - 1
    piece.RGBSurface.Pixel(column, row) = photo.RGBSurface.Pixel(left + column, top + row)
  Next
Next
piece.Save(GetFolderItem("FindPictureQVR.png"), Picture.SaveAsPNG)

Dim x, y As Integer
If photo.FindPictureQVR(piece, x, y) Then
  If x = left And y = top Then
    Print "Found where it was taken from"
  End If
End If
' Prints: Found where it was taken from
