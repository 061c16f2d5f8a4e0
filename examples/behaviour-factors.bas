' Shows: a green pixel that vanishes when FactorBlue becomes 0, and does not mind FactorGreen.
Dim dot As New Picture(1, 1, 32)
dot.RGBSurface.Pixel(0, 0) = RGB(0, 200, 0)
Dim sepia As New PictureSepiaQVR
sepia.SourcePicture = dot
Print "FactorBlue is " + Str(sepia.FactorBlue) + ", FactorGreen is " + Str(sepia.FactorGreen)

sepia.FactorGreen = 0
Call sepia.Run
Print "Green without FactorGreen: " + Str(sepia.DestinationPicture.RGBSurface.Pixel(0, 0).Red)
sepia.DestinationPicture = Nil ' the next run would not release it
sepia.FactorBlue = 0
Call sepia.Run
Print "Green without FactorBlue: " + Str(sepia.DestinationPicture.RGBSurface.Pixel(0, 0).Red)
' Prints: FactorBlue is 0.587, FactorGreen is 0.114
' Prints: Green without FactorGreen: 117
' Prints: Green without FactorBlue: 0
