// A loadable module built on the framework: a module object whose list holds three counters.
// Each counter answers the call protocol: its properties "name" and "count", and a call with a
// "step" parameter that adds the step to the count and yields the new count.

#include "ExampleModule.h"

namespace {

class CExampleCounter : public CVeskCOMObject {
    VESK_DECLARE_INTERFACE_MAP(CExampleCounter)

    CExampleCounter(const char* name, double count) : m_sName(name), m_dCount(count) {}

    CVeskGenericData* GetProperty(const CDorlString& name)
    {
        if (name == "name")
            return CVeskGdString::Allocate(m_sName);
        if (name == "count")
            return CVeskGdDouble::Allocate(m_dCount);
        return nullptr;
    }

    int Add(CVeskCommandContext* context)
    {
        double step = 1;
        context->SetCalledFunctionName(m_sName);
        context->GetParam("step", &step, 1);
        if (!context->CanProceed(0))
            return 1;
        m_dCount += step;
        context->SetReturnValueNoRef(CVeskGdDouble::Allocate(m_dCount));
        return 1;
    }

    VESK_BEGIN_INTERFACE_PART(VeskCommand, IVeskCommand)
        CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int) override
        {
            return Owner()->GetProperty(name);
        }
        int STDMETHODCALLTYPE SetProperty(const CDorlString&, CVeskGenericData*) override
        {
            return 0;
        }
        int STDMETHODCALLTYPE CallMethod(CVeskCommandContext * context) override
        {
            return Owner()->Add(context);
        }
        CVeskPropertyEnum* STDMETHODCALLTYPE GetPropertyEnumerator() override { return nullptr; }
    VESK_END_INTERFACE_PART(VeskCommand)

    CDorlString m_sName;
    double m_dCount;
};

VESK_BEGIN_INTERFACE_MAP(CExampleCounter, CVeskCOMObject)
    VESK_INTERFACE(IID_IVeskCommand, VeskCommand)
VESK_END_INTERFACE_MAP()

class CExampleModule : public CVeskDLL {
public:
    // The counters live from Startup to Shutdown; the list holds one reference on each.
    int OnStartup(IUnknown* pUnknown) override
    {
        CVeskDLL::OnStartup(pUnknown);
        if (IsEmpty()) {
            Hold(new CExampleCounter("pumps", 0));
            Hold(new CExampleCounter("valves", 10));
            Hold(new CExampleCounter("alarms", 0));
        }
        return 1;
    }

    unsigned long OnGetVersion() override { return 0x00010000; }

    const CDorlString& OnGetName() override
    {
        static const CDorlString s_sName("example");
        return s_sName;
    }

private:
    // Takes over the reference of the new object.
    void Hold(CVeskCOMObject* object)
    {
        void* unknown = nullptr;
        object->ExternalQueryInterface(&IID_IUnknown, &unknown);
        object->ExternalRelease();
        AddTail(static_cast<IUnknown*>(unknown));
    }
};

// Runs at the host's next DorlRunInitialisers, which VeskLoadLibrary calls after loading, once
// the framework's own start-up routine has filled what the module relies on.
void StartModule() { VeskRegisterInterfaceIdName(CLSID_ExampleModule, "ExampleModule"); }

const int s_nStartModule = DorlAddInitialiser(&StartModule);

} // namespace

extern "C" __attribute__((visibility("default"))) IVeskDLL* VeskGetModule()
{
    CExampleModule* module = new CExampleModule;
    void* dll = nullptr;
    module->ExternalQueryInterface(&IID_IVeskDLL, &dll);
    module->ExternalRelease();
    return static_cast<IVeskDLL*>(dll);
}
