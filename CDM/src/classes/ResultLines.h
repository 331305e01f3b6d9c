// The human-readable lines of a result: time stamp, "|", the test's title, "|", the detail; one for each
// entry of the record.
#pragma once

#include "Common/src/com/Bstr.h"

#include <vector>

struct CResultData;
class CWomContext;

// `timeStamp` is the record's, as CIM date-time. If a text cannot be had, its status is traced and returned;
// `lines` is then unusable.
HRESULT BuildResultLines(CWomContext& context, const CResultData& record, const wchar_t* timeStamp,
                         const wchar_t* title, std::vector<CBstr>& lines);
