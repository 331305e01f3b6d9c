// How the page of a report looks: on screens of any width, dark and light, and on paper. It holds none of the
// characters that have to be escaped.
#pragma once

namespace zebdiag
{
extern const wchar_t kPageStyle[];
} // namespace zebdiag
