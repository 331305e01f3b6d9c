' Reads the coverage of the test whose key is the first argument; where there is a second one, changes it to that first.
Dim service, path, setting
path = "Tolva_DiagSetting.SettingID=""" & WScript.Arguments.Item(0) & """"
Set service = GetObject("winmgmts:\\.\root\cimv2")
If WScript.Arguments.Count > 1 Then
    Set setting = service.Get(path)
    WScript.Echo "before: " & setting.PercentOfTestCoverage
    setting.PercentOfTestCoverage = CByte(WScript.Arguments.Item(1))
    WScript.Echo "to put: " & setting.PercentOfTestCoverage
    On Error Resume Next
    setting.Put_
    If Err.Number <> 0 Then WScript.Echo "not put: " & LCase(Hex(Err.Number))
    On Error GoTo 0
End If
Set setting = service.Get(path)
WScript.Echo "now: " & setting.PercentOfTestCoverage
