' Shows: a photograph that comes back from a string of bytes, and a damaged string that does not.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim data As String = PicturetoBinaryStringQVR(photo)
Dim copy As Picture = BinaryStringtoPictureQVR(data)
copy.Save(GetFolderItem("BinaryStringtoPictureQVR.png"), Picture.SaveAsPNG)

If BinaryStringtoPictureQVR(data + "x") = Nil Then
  Print "One byte too many: no picture"
End If
' Prints: One byte too many: no picture
