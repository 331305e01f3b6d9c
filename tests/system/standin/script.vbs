' What WMI scripts do, once each.
Set services = GetObject("winmgmts:\\.\root\cimv2")

Function Names(items)
    Dim item, all
    all = ""
    For Each item In items
        all = all & " " & item.Name
    Next
    Names = all
End Function

WScript.Echo "instances:" & Names(services.InstancesOf("StandinTest_Item"))
WScript.Echo "query:" & Names(services.ExecQuery("SELECT * FROM StandinTest_Item WHERE Even = TRUE"))
Set item = services.Get("StandinTest_Item.Name=""n3""")
WScript.Echo "get: " & item.Name & " " & item.Big
