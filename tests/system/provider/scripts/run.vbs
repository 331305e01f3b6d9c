' Runs the test whose key is the first argument on its adapter, the second one, and shows the outcome.
Dim service, test, parameters, outcome, result
Set service = GetObject("winmgmts:\\.\root\cimv2")
Set test = service.Get("Tolva_DiagTest.Name=""" & WScript.Arguments(0) & """")
Set parameters = test.Methods_("RunTest").InParameters.SpawnInstance_
parameters.SystemElement = "Tolva_EthernetAdapter.DeviceID=""" & WScript.Arguments(1) & """"
Set outcome = service.ExecMethod("Tolva_DiagTest.Name=""" & WScript.Arguments(0) & """", "RunTest", parameters)
Set result = service.Get(outcome.Result)
WScript.Echo "TestState " & result.TestState
