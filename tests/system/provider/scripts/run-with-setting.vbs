' Runs the test whose key is the argument with the values of its setting, and shows what it has found.
Dim service, key, adapter, parameters, outcome, result, line
key = WScript.Arguments.Item(0)
adapter = Mid(key, InStr(key, "@") + 1)
Set service = GetObject("winmgmts:\\.\root\cimv2")
Set parameters = service.Get("Tolva_DiagTest").Methods_.Item("RunTest").InParameters
parameters.SystemElement = "Tolva_EthernetAdapter.DeviceID=""" & adapter & """"
parameters.Setting = "Tolva_DiagSetting.SettingID=""" & key & """"
Set outcome = service.ExecMethod("Tolva_DiagTest.Name=""" & key & """", "RunTest", parameters)
If outcome.Result & "" = "" Then
    WScript.Echo "There was no run: the test is running already."
Else
    Set result = service.Get("Tolva_DiagResult.DiagnosticName=""" & key & """," & _
        "DiagnosticCreationClassName=""Tolva_DiagTest"",ExecutionID=""" & adapter & """")
    WScript.Echo "TestState " & result.TestState
    If Not IsNull(result.TestResults) Then
        For Each line In result.TestResults
            WScript.Echo Mid(line, InStr(line, "|") + 1)
        Next
    End If
End If
