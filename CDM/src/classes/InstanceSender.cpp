#include "CDM/src/classes/InstanceSender.h"

CInstanceSender::CInstanceSender(CWomContext& context, const wchar_t* className, ComPtr<IWbemObjectSink> sink)
    : m_context(context), m_sink(std::move(sink)), m_class(&context), m_instance(&context)
{
    m_class.CreateClass(className);
    m_class.SetThrowing(false);
    m_instance.SetThrowing(false);
}

HRESULT CInstanceSender::PutCodes(const wchar_t* property, const std::vector<USHORT>& codes)
{
    auto known = m_arrays.find(codes);
    if (known == m_arrays.end())
    {
        CVariant array;
        const HRESULT hr =
            m_instance.MakeArray(property, std::vector<long>(codes.begin(), codes.end()), array);
        if (FAILED(hr))
            return hr;
        known = m_arrays.emplace(codes, std::move(array)).first;
    }
    return m_instance.SetPropertyArray(property, known->second);
}
