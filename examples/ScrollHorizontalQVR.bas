' Shows: the photograph moved right by a fifth of its width; what leaves on the right comes back on the left.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
If photo.ScrollHorizontalQVR(photo.Width \ 5, True, False) Then
  photo.Save(GetFolderItem("ScrollHorizontalQVR.png"), Picture.SaveAsPNG)
End If
