#include "CDM/src/classes/InstanceSender.h"

#include "CDM/src/ZebHelpers.h"

CInstanceSender::CInstanceSender(CWomContext& context, const wchar_t* className, ComPtr<IWbemObjectSink> sink)
    : m_context(context), m_sink(std::move(sink)), m_class(&context), m_instance(&context)
{
    m_class.CreateClass(className);
    m_class.SetThrowing(false);
    m_instance.SetThrowing(false);
}

const CBstr& CInstanceSender::ComputerName()
{
    if (!m_computerName)
        m_computerName = CBstr(::ComputerName());
    return m_computerName;
}

HRESULT CInstanceSender::ResourceString(UINT id, const char* baseName, const CBstr*& text)
{
    const auto [place, isNew] = m_texts.try_emplace({id, baseName});
    if (isNew)
    {
        const HRESULT hr = m_context.GetResourceString(id, baseName, place->second);
        if (FAILED(hr))
        {
            m_texts.erase(place);
            return hr;
        }
    }
    text = &place->second;
    return S_OK;
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
