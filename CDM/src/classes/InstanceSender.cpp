#include "CDM/src/classes/InstanceSender.h"

#include "CDM/src/ZebHelpers.h"

CInstanceSender::CInstanceSender(CWomContext& context, const wchar_t* className, ComPtr<IWbemObjectSink> sink)
    : m_context(context), m_sink(std::move(sink)), m_class(&context), m_instance(&context)
{
    m_class.CreateClass(className);
    m_class.SetThrowing(false);
    m_instance.SetThrowing(false);
}

const wchar_t* CInstanceSender::ComputerName()
{
    if (!m_computerName)
        m_computerName = ::ComputerName();
    return m_computerName;
}

HRESULT CInstanceSender::ResourceString(UINT id, const char* baseName, const wchar_t*& text)
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
    text = place->second.Text();
    return S_OK;
}
