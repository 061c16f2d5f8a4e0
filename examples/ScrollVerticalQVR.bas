' Shows: the photograph moved up by a quarter of its height; without wrap-around the uncovered band is erased.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
If photo.ScrollVerticalQVR(-photo.Height \ 4, False, False) Then
  photo.Save(GetFolderItem("ScrollVerticalQVR.png"), Picture.SaveAsPNG)
End If
