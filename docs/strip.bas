' Shows: the strip at the top of README.md: a photograph, and what the plug-in makes of it.
Dim photo As Picture = Picture.Open(GetFolderItem("photo.jpg"))
Dim width As Integer = 120
Dim height As Integer = 90
Dim gap As Integer = 4

' Smaller, each pixel the average of some in a field of the photograph
Dim apart As Integer = photo.Width \ (4 * width) + 1
Dim small As New Picture(width, height, 32)
For y As Integer = 0 To height - 1
  Dim top As Integer = y * photo.Height \ height
  Dim bottom As Integer = (y + 1) * photo.Height \ height
  For x As Integer = 0 To width - 1
    Dim left As Integer = x * photo.Width \ width
    Dim right As Integer = (x + 1) * photo.Width \ width
    Dim red, green, blue, count As Integer
    For row As Integer = top To bottom - 1 Step apart
      For column As Integer = left To right - 1 Step apart
        Dim colour As Color = photo.RGBSurface.Pixel(column, row)
        red = red + colour.Red
        green = green + colour.Green
        blue = blue + colour.Blue
        count = count + 1
      Next
    Next
    small.RGBSurface.Pixel(x, y) = RGB(red \ count, green \ count, blue \ count)
  Next
Next

Dim sepia As New PictureSepiaQVR
sepia.SourcePicture = small
sepia.SepiaRed = 40
sepia.SepiaGreen = 20
sepia.SepiaBlue = -20
Call sepia.Run

Dim strip As New Picture(7 * (width + gap) - gap, height, 32)
For number As Integer = 0 To 6
  Dim panel As Picture = small
  If number = 1 Then panel = small.InvertQVR
  If number = 2 Then panel = small.ChangeContrastQVR(0.5)
  If number = 3 Then panel = small.ChangeSaturationQVR(200)
  If number = 4 Then panel = sepia.DestinationPicture
  If number = 5 Then panel = TintPictureQVR(small, &cFF0000, &c80C0FF)
  If number = 6 Then panel = small.ReplaceRedChannelQVR(small.InvertQVR)
  For y As Integer = 0 To height - 1
    For x As Integer = 0 To width - 1
      strip.RGBSurface.Pixel(number * (width + gap) + x, y) = panel.RGBSurface.Pixel(x, y)
    Next
  Next
Next
strip.Save(GetFolderItem("strip.png"), Picture.SaveAsPNG)
