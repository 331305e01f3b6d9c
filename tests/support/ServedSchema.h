// The schema as it ships, on top of the stand-in's base classes, for tests that run in one process.
#pragma once

#include "tests/support/FailingClassObject.h"
#include "tests/support/FakeServices.h"

#include "standin/mof/Repository.h"
#include "standin/object/Objects.h"

// The name space in which the schema is compiled.
inline constexpr wchar_t kServedNamespace[] = L"root\\cimv2";

// Compiled once per test process.
standin::CRepository& ServedSchema();

// A name space that gives the schema's classes. What is read from them, spawned from them and put into what
// was spawned follows `plan`.
ComPtr<CFakeServices> MakeServedNamespace(CallPlan plan);
