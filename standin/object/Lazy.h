// Something that is worked out from its owner when first asked for. A copy of the owner starts without it.
#pragma once

#include "standin/object/SrwLock.h"

#include <memory>

namespace standin
{
template <class T>
class CLazy
{
  public:
    CLazy() noexcept = default;
    CLazy(const CLazy&) noexcept {}
    CLazy& operator=(const CLazy&) = delete;

    // `make` returns std::shared_ptr<const T>; two threads that ask at once may both make one.
    template <class Make>
    std::shared_ptr<const T> Get(Make&& make) const
    {
        {
            const CShared lock(m_lock);
            if (m_value)
                return m_value;
        }
        auto value = make();
        const CExclusive lock(m_lock);
        if (!m_value)
            m_value = std::move(value);
        return m_value;
    }
    void Reset() noexcept { m_value.reset(); }

  private:
    mutable SRWLOCK m_lock = SRWLOCK_INIT;
    mutable std::shared_ptr<const T> m_value;
};
} // namespace standin
