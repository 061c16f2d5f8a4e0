' Shows: a stereo sound drawn as it lies in the block, and its left channel alone.
' The left channel is 16 above the centre everywhere, the right one silent.
Dim stereo As New MemoryBlock(2048)
For i As Integer = 0 To 1023
  stereo.Byte(2 * i) = 128 + 16
  stereo.Byte(2 * i + 1) = 128
Next
Dim left As New MemoryBlock(1024)
For i As Integer = 0 To 1023
  left.Byte(i) = stereo.Byte(2 * i)
Next
Dim both As Picture = RenderSamplesQVR(stereo, 0, 1, 128, 254, 0, &cFFFFFF, &c000000)
Dim one As Picture = RenderSamplesQVR(left, 0, 1, 128, 254, 0, &cFFFFFF, &c000000)
both.Save(GetFolderItem("behaviour-channels.png"), Picture.SaveAsPNG)
one.Save(GetFolderItem("behaviour-channels-2.png"), Picture.SaveAsPNG)
Print "Both: bars of " + Str(both.CountColorQVR(&c000000) / 128) + " rows"
Print "Left: bars of " + Str(one.CountColorQVR(&c000000) / 128) + " rows"
' Prints: Both: bars of 33 rows
' Prints: Left: bars of 65 rows
