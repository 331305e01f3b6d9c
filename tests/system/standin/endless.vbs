' Reads a class that has no end until somebody ends this program.
Set services = GetObject("winmgmts:\\.\root\cimv2")
For Each item In services.InstancesOf("StandinTest_Endless")
Next
