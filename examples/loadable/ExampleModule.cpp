// A loadable module built on the framework: a module object whose list holds three counter
// components while the module is started.

#include "ExampleModule.h"

namespace {

// A counter that scripts reach by name: "name" and "count", and Add([step]), which adds the
// step (1 unless given) to the count and answers the new count.
class CExampleCounter : public CVeskComponent {
    VESK_DECLARE_PROPERTY_MAP(CExampleCounter)

public:
    CExampleCounter(const char* name, double count) : CVeskComponent(name), m_dCount(count)
    {
        VESK_FILL_PROPERTY_MAP();
    }

    int Add(CVeskCommandContext* context)
    {
        double step = 1;
        context->GetParam("step", &step, 1);
        if (!context->CanProceed(0))
            return 1;
        m_dCount += step;
        context->SetReturnValueNoRef(CVeskGdDouble::Allocate(m_dCount));
        return 1;
    }

    double m_dCount;
};

VESK_BEGIN_PROPERTY_MAP(CExampleCounter, CVeskComponent)
    VESK_DOUBLE_PROPERTY("count", m_dCount, VeskReadWrite)
    VESK_FUNCTION_PROPERTY("Add", Add)
VESK_END_PROPERTY_MAP()

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
