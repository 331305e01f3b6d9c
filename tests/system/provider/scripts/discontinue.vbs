' Stops the test whose key is the first argument on its adapter, the second one, whoever runs it.
Dim service, parameters, outcome
Set service = GetObject("winmgmts:\\.\root\cimv2")
Set parameters = service.Get("Tolva_DiagTest").Methods_.Item("DiscontinueTest").InParameters
parameters.SystemElement = "Tolva_EthernetAdapter.DeviceID=""" & WScript.Arguments.Item(1) & """"
Set outcome = service.ExecMethod("Tolva_DiagTest.Name=""" & WScript.Arguments.Item(0) & """", "DiscontinueTest", parameters)
If outcome.TestingStopped Then WScript.Echo "Stopped"
WScript.Echo "ReturnValue " & outcome.ReturnValue
