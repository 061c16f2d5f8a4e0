' Shows: a rectangle in the middle, for which the filter works on the corner instead.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim w As Integer = photo.Width \ 4
Dim h As Integer = photo.Height \ 4
Dim sepia As New PictureSepiaQVR
sepia.SourcePicture = photo
sepia.MinX = 2 * w
sepia.MinY = 2 * h
sepia.MaxX = 3 * w
sepia.MaxY = 3 * h
Call sepia.Run
Dim result As Picture = sepia.DestinationPicture
result.Save(GetFolderItem("behaviour-filter-rectangle.png"), Picture.SaveAsPNG)

' Columns 0 to w - 1 and rows 0 to h - 1, since the ends are exclusive.
If result.isWhiteQVR(w, 0, -1, -1) And result.isWhiteQVR(0, h, -1, -1) Then
  Print "Nothing was written outside of the corner"
End If
If Not result.isWhiteQVR(0, 0, w, h) Then
  Print "The result is in the corner"
End If
' Prints: Nothing was written outside of the corner
' Prints: The result is in the corner
