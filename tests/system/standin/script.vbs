' What WMI scripts can do with Wine's scripting objects, once each.
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
WScript.Echo "associators:" & Names(services.ExecQuery("ASSOCIATORS OF {StandinTest_Item.Name=""n2""}"))
Set item = services.Get("StandinTest_Item.Name=""n3""")
WScript.Echo "get: " & item.Name & " " & item.Properties_.Item("Big").Value

Set parameters = services.Get("StandinTest_Item").Methods_.Item("Double").InParameters
parameters.Value = 7
Set answer = services.ExecMethod("StandinTest_Item.Name=""n3""", "Double", parameters)
WScript.Echo "method: " & answer.Result & " " & answer.ReturnValue
Set answer = item.ExecMethod_("Double", parameters)
WScript.Echo "method of the object: " & answer.Result

On Error Resume Next
Set nothing_ = services.Get("StandinTest_None")
WScript.Echo "unknown class: " & Hex(Err.Number)
