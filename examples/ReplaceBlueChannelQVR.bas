' Shows: blue taken from a copy that was moved downwards.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim moved As Picture = photo.ChangeCustomQVR(1, 0)
Call moved.ScrollVerticalQVR(photo.Height \ 12, True, False)
Dim result As Picture = photo.ReplaceBlueChannelQVR(moved)
result.Save(GetFolderItem("ReplaceBlueChannelQVR.png"), Picture.SaveAsPNG)
