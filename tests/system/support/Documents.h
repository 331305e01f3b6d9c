// Keeps the JSON documents that programs print for a test, so that a later test can check all of them.
#pragma once

#include "tests/system/support/Process.h"

#include <string>

// As a file; one that an earlier run of this test program has kept is gone with the first one.
void KeepDocument(const std::string& document);

// Does nothing if the command line does not ask for a document, or if it could not be understood, for which
// there is none.
void KeepPrintedDocument(const std::wstring& commandLine, const CRunResult& result);
