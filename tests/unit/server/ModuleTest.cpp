#include "CDM/src/server/ProviderFactory.h"
#include "CDM/src/server/Server.h"
#include "CDM/src/server/ServerModule.h"

#include "Common/src/com/ComObject.h"

#include <gtest/gtest.h>
#include <wbemprov.h>

namespace
{
class ModuleTest : public testing::Test
{
  protected:
    void SetUp() override { ASSERT_EQ(m_module.Init(GetModuleHandleW(nullptr)), S_OK); }
    void TearDown() override { m_module.Term(); }

    CServerModule& m_module = CServerModule::Instance();
};

TEST_F(ModuleTest, RecordsTheTypeLibrary)
{
    EXPECT_TRUE(IsEqualGUID(m_module.TypeLibrary(), kLibidDrevok));
}

TEST_F(ModuleTest, CountsLocks)
{
    EXPECT_EQ(m_module.Lock(), 1);
    EXPECT_EQ(m_module.Lock(), 2);
    EXPECT_EQ(m_module.Unlock(), 1);
    EXPECT_EQ(m_module.Unlock(), 0);
}

TEST_F(ModuleTest, RegisteredClassObjectMakesProvidersThatHoldOneLock)
{
    const long before = g_liveComObjects;
    ASSERT_EQ(m_module.RegisterClassObjects(CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE), S_OK);
    ComPtr<IWbemProviderInit> provider;
    EXPECT_EQ(CoCreateInstance(kClsidProviderImp, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemProviderInit,
                               provider.PutVoid()),
              S_OK);
    EXPECT_EQ(m_module.Lock(), 2);
    m_module.Unlock();
    EXPECT_EQ(CServerModule::Providers(), 1);
    provider.Reset();
    EXPECT_EQ(CServerModule::Providers(), 0);
    EXPECT_EQ(m_module.Lock(), 1);
    m_module.Unlock();
    m_module.RevokeClassObjects();
    EXPECT_EQ(g_liveComObjects, before);
    EXPECT_NE(CoCreateInstance(kClsidProviderImp, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemProviderInit,
                               provider.PutVoid()),
              S_OK);
}

// Whoever still holds the class object.
TEST_F(ModuleTest, MakesNoProviderOnceItIsClosed)
{
    ASSERT_EQ(m_module.RegisterClassObjects(CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE), S_OK);
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(CoGetClassObject(kClsidProviderImp, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                               factory.PutVoid()),
              S_OK);
    ComPtr<IWbemProviderInit> provider;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IWbemProviderInit, provider.PutVoid()), S_OK);
    provider.Reset();
    m_module.Close();
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IWbemProviderInit, provider.PutVoid()),
              CO_E_SERVER_STOPPING);
    EXPECT_FALSE(provider);
    EXPECT_EQ(CServerModule::Providers(), 0);
    EXPECT_EQ(m_module.Lock(), 1) << "nothing is left of the attempt";
    m_module.Unlock();
    factory.Reset();
    m_module.RevokeClassObjects();
}

TEST_F(ModuleTest, KnowsTheForceExitMessageFromTheStart)
{
    EXPECT_NE(ForceExitMessage(), 0u);
    EXPECT_EQ(ForceExitMessage(), RegisterWindowMessageA("Force Veltrane(R) ZEB WMI Providers to exit"));
}
} // namespace
