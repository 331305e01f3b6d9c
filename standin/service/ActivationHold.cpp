#include "standin/service/ActivationHold.h"

#include "Common/src/com/ComObject.h"

#include <servprov.h>

namespace standin
{
namespace
{
class CNoServices : public CComObject<IServiceProvider>
{
  public:
    STDMETHODIMP QueryService(REFGUID, REFIID, void** out) override
    {
        if (out)
            *out = nullptr;
        return E_NOINTERFACE;
    }
};

HRESULT HoldStub(IUnknown* object, REFIID riid)
{
    ComPtr<IStream> stream;
    const HRESULT hr = CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    return FAILED(hr)
               ? hr
               : CoMarshalInterface(stream.Get(), riid, object, MSHCTX_LOCAL, nullptr, MSHLFLAGS_TABLESTRONG);
}
} // namespace

HRESULT HoldActivationInterfaces(IClassFactory* factory)
{
    const HRESULT hr = HoldStub(MakeCom<CNoServices>().Get(), __uuidof(IServiceProvider));
    return FAILED(hr) ? hr : HoldStub(factory, __uuidof(IClassFactory));
}
} // namespace standin
