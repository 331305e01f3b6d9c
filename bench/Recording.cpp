#include "bench/Recording.h"

#include "bench/Must.h"
#include "tests/support/FailingClassObject.h"

namespace
{
// Every instance arrives right after its puts, whose names the plan has noted.
class CRecordingSink final : public CComObject<IWbemObjectSink>
{
  public:
    explicit CRecordingSink(CallPlan plan) : m_plan(std::move(plan)) {}

    STDMETHODIMP Indicate(LONG, IWbemClassObject** objects) override
    {
        CRecordedInstance instance;
        const std::vector<std::wstring>& names = m_plan->Puts();
        for (; m_taken < names.size(); ++m_taken)
        {
            CRecordedPut put;
            put.Name = names[m_taken];
            const HRESULT hr = objects[0]->Get(put.Name.c_str(), 0, put.Value.Put(), nullptr, nullptr);
            if (FAILED(hr))
                return hr;
            instance.push_back(std::move(put));
        }
        m_instances.push_back(std::move(instance));
        return WBEM_S_NO_ERROR;
    }
    STDMETHODIMP SetStatus(LONG, HRESULT, BSTR, IWbemClassObject*) override { return WBEM_S_NO_ERROR; }

    std::vector<CRecordedInstance> Take() { return std::move(m_instances); }

  private:
    const CallPlan m_plan;
    size_t m_taken = 0;
    std::vector<CRecordedInstance> m_instances;
};
} // namespace

std::vector<CRecordedInstance> RecordInstances(CInProcessProvider& provider, const wchar_t* className)
{
    const auto plan = std::make_shared<CCallPlan>();
    provider.Dress([plan](ComPtr<IWbemClassObject> definition)
                   { return MakeCom<CFailingClassObject>(std::move(definition), plan); });
    const ComPtr<CRecordingSink> sink = MakeCom<CRecordingSink>(plan);
    provider.Enumerate(className, *sink.Get());
    provider.Dress({});
    return sink->Take();
}

void DeliverBare(IWbemClassObject& definition, std::vector<CRecordedInstance>& instances,
                 IWbemObjectSink& sink)
{
    for (CRecordedInstance& puts : instances)
    {
        ComPtr<IWbemClassObject> instance;
        Must(definition.SpawnInstance(0, instance.Put()), "SpawnInstance");
        for (CRecordedPut& put : puts)
            Must(instance->Put(put.Name.c_str(), 0, &put.Value, 0), "Put");
        IWbemClassObject* object = instance.Get();
        Must(sink.Indicate(1, &object), "Indicate");
    }
}
