' Clears the results of the test whose key is the first argument on its adapter, the second one, and lists what is left.
Dim service, parameters, outcome, result
Set service = GetObject("winmgmts:\\.\root\cimv2")
Set parameters = service.Get("Tolva_DiagTest").Methods_.Item("ClearResults").InParameters
parameters.SystemElement = "Tolva_EthernetAdapter.DeviceID=""" & WScript.Arguments.Item(1) & """"
Set outcome = service.ExecMethod("Tolva_DiagTest.Name=""" & WScript.Arguments.Item(0) & """", "ClearResults", parameters)
WScript.Echo "ReturnValue " & outcome.ReturnValue
For Each result In service.InstancesOf("Tolva_DiagResult")
    WScript.Echo "left: " & result.DiagnosticName
Next
