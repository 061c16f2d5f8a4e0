' Shows: whether a picture has no colour at all, or hardly any.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim grey As Picture = photo.ChangeSaturationQVR(-255)
If grey.isGrayQVR Then
  Print "Grey"
End If

Dim warm As Picture = grey.ChangeBrightnessAbsoluteQVR(3, 0, 0)
warm.Save(GetFolderItem("isGrayQVR.png"), Picture.SaveAsPNG)
If Not warm.isGrayQVR Then
  Print "Not quite grey"
End If
If warm.isGrayQVR(3) Then
  Print "Grey to within 3"
End If
If warm.isGrayQVR(3, 0, 0, 32, 32) Then
  Print "So is its top left corner"
End If
' Prints: Grey
' Prints: Not quite grey
' Prints: Grey to within 3
' Prints: So is its top left corner
