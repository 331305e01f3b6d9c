Set service = GetObject("winmgmts:\\.\root\cimv2")
For Each test In service.InstancesOf("Tolva_DiagTest")
    WScript.Echo test.Name & ": " & test.Caption
Next
