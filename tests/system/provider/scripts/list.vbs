' Lists the names of all tests, as an administrator's script would.
Dim service, test
Set service = GetObject("winmgmts:\\.\root\cimv2")
For Each test In service.InstancesOf("Tolva_DiagTest")
    WScript.Echo test.Name
Next
