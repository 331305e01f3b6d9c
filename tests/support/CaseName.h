// Names the cases of a table-driven test by the `name` member of their rows.
#pragma once

#include <gtest/gtest.h>

template <class Case>
std::string NameOf(const testing::TestParamInfo<Case>& info)
{
    return info.param.name;
}
