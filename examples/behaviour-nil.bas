' Shows: a few of the calls that quietly give nil.
Dim small As New Picture(4, 4, 32)
Dim wide As New Picture(5, 4, 32)
If MergePictureQVR(small, wide) = Nil Then
  Print "Two sizes do not merge"
End If
If wide.ReplaceRedChannelQVR(small) = Nil Then
  Print "A channel picture may not be smaller"
End If
If small.ReplaceRedChannelQVR(wide) <> Nil Then
  Print "But it may be larger"
End If
If BinaryStringtoPictureQVR("not a picture") = Nil Then
  Print "No picture in these bytes"
End If
' Prints: Two sizes do not merge
' Prints: A channel picture may not be smaller
' Prints: But it may be larger
' Prints: No picture in these bytes
