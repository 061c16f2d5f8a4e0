' Shows: how the black bars above and below a film frame are measured.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
' One level lighter, so that nothing but the bars is black.
Dim light As Picture = photo.ChangeBrightnessAbsoluteQVR(1)
Dim frame As Picture = light.InvertQVR(0, 20, photo.Width, photo.Height - 40).InvertQVR
frame.Save(GetFolderItem("isBlackQVR.png"), Picture.SaveAsPNG)

Dim bar As Integer = 0
While frame.isBlackQVR(0, bar, frame.Width, 1)
  bar = bar + 1
Wend
Print "The bar is " + Str(bar) + " pixels high"
If Not frame.isBlackQVR Then
  Print "The frame is not black"
End If
' Prints: The bar is 20 pixels high
' Prints: The frame is not black
