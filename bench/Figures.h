// The figures. Each prints its lines into the report.
#pragma once

#include "bench/Report.h"

// Enumeration in process against the bare minimum for the same instances.
void MeasureEnumeration(CReport& report);
// Enumeration across processes against a server that has the objects ready.
void MeasureAcrossProcesses(CReport& report);
// RunTest of a test that ends at once against the agent's own call.
void MeasureRun(CReport& report);
// Storing and loading results against writing and reading the same streams.
void MeasureStore(CReport& report);
// The provider process's memory after many requests against that after fewer.
void MeasureMemory(CReport& report);
// Sender and responder over loopback against a bare loop.
void MeasureStamp(CReport& report);
