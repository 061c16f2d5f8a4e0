' Shows: a photograph opened, given more contrast, and saved.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim result As Picture = photo.ChangeContrastQVR(0.3)
If result <> Nil Then
  result.Save(GetFolderItem("guide-first.png"), Picture.SaveAsPNG)
End If
