' Shows: red from the photograph, blue from a copy moved to the right, green from its negative.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim moved As Picture = photo.ChangeCustomQVR(1, 0)
Call moved.ScrollHorizontalQVR(photo.Width \ 8, True, False)
' The order is red, blue, green.
Dim result As Picture = CombinePicturesQVR(photo, moved, photo.InvertQVR)
result.Save(GetFolderItem("CombinePicturesQVR.png"), Picture.SaveAsPNG)
