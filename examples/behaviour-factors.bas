' Shows: a green pixel that vanishes when FactorBlue becomes 0, and does not mind FactorGreen.
Dim dot As New Picture(1, 1, 32)
dot.RGBSurface.Pixel(0, 0) = RGB(0, 200, 0)
Dim sepia As New PictureSepiaQVR
sepia.SourcePicture = dot
Print "FactorBlue is " + Str(sepia.FactorBlue)
Print "FactorGreen is " + Str(sepia.FactorGreen)

sepia.FactorGreen = 0
Call sepia.Run
Dim c As Color = sepia.DestinationPicture.RGBSurface.Pixel(0, 0)
Print "Green without FactorGreen: " + Str(c.Red)
sepia.DestinationPicture = Nil ' the next run would not release it
sepia.FactorBlue = 0
Call sepia.Run
c = sepia.DestinationPicture.RGBSurface.Pixel(0, 0)
Print "Green without FactorBlue: " + Str(c.Red)
' Prints: FactorBlue is 0.587
' Prints: FactorGreen is 0.114
' Prints: Green without FactorGreen: 117
' Prints: Green without FactorBlue: 0
