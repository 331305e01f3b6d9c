' Runs the test whose key is the first argument on its adapter, the second one, and shows the outcome.
Dim service, parameters, outcome, result
Set service = GetObject("winmgmts:\\.\root\cimv2")
Set parameters = service.Get("Tolva_DiagTest").Methods_.Item("RunTest").InParameters
parameters.SystemElement = "Tolva_EthernetAdapter.DeviceID=""" & WScript.Arguments.Item(1) & """"
Set outcome = service.ExecMethod("Tolva_DiagTest.Name=""" & WScript.Arguments.Item(0) & """", "RunTest", parameters)
Set result = service.Get(outcome.Result)
WScript.Echo "TestState " & result.TestState
