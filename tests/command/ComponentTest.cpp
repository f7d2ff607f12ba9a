#include <string>
#include <vector>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class Components : public StartedTest {};

IUnknown* Unknown(CVeskComponent* component)
{
    return static_cast<IUnknown*>(component->GetInterface(&IID_IUnknown));
}

// The object a component's property holds, as its IUnknown; null for no object.
template <class T> IUnknown* ObjectAt(T* component, const char* name)
{
    Ref<CVeskGenericData> value(component->GetProperty(name, 0));
    if (!value.get() || value->GetType() != CVeskGenericData::dtObject)
        return nullptr;
    IUnknown* unknown = nullptr;
    static_cast<CVeskGdObject*>(value.get())
        ->GetObjectA()
        ->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown));
    unknown->Release();
    return unknown;
}

template <class T> std::string Shown(T* component, const char* name)
{
    return Printed(Ref<CVeskGenericData>(component->GetProperty(name, 0)).get());
}

int Link(CVeskComponent* base, CVeskComponent* derived)
{
    Ref<CVeskGenericData> value(
        derived ? static_cast<CVeskGenericData*>(CVeskGdObject::Allocate(derived))
                : CVeskGdNull::Allocate());
    return base->SetProperty("*derived", value.get());
}

std::vector<std::string> s_monitored;
void Monitor(void*, const char* name, int bCreated)
{
    s_monitored.push_back(std::string(bCreated ? "+" : "-") + name);
}

} // namespace

TEST_F(Components, NewComponentIsNamedReadOnlyAndItsOwnTopObject)
{
    CVeskComponent* component = new CVeskComponent("pump");
    IVeskCommand* command = nullptr;
    ASSERT_EQ(component->QueryInterface(&IID_IVeskCommand, reinterpret_cast<void**>(&command)),
              S_OK);
    EXPECT_EQ(Shown(command, "name") + Shown(command, "*name"), "pumppump");
    EXPECT_EQ(Shown(command, "derived"), "Null");
    EXPECT_EQ(ObjectAt(command, "topObject"), Unknown(component));
    // The top object is worked out from the links, so it cannot be written.
    Ref<CVeskGenericData> text(CVeskGdString::Allocate("valve"));
    EXPECT_EQ(command->SetProperty("topObject", text.get()), 0);
    CVeskCommandContext context;
    EXPECT_EQ(command->CallMethod(&context), 0);

    // Every face leads to the same IUnknown, and the hooks answer "not supported".
    Ref<IVeskSerialise> serialise;
    Ref<IVeskComponent> face;
    Ref<IUnknown> unknown;
    component->QueryInterface(&IID_IVeskSerialise, reinterpret_cast<void**>(&serialise));
    component->QueryInterface(&IID_IVeskComponent, reinterpret_cast<void**>(&face));
    serialise->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown));
    EXPECT_EQ(unknown.get(), static_cast<IUnknown*>(command));
    EXPECT_EQ(serialise->Serialise(nullptr) + face->WriteData("tag", nullptr) +
                  face->ReadData("tag", nullptr),
              0);
    EXPECT_TRUE(serialise->GetCreationName().IsEmpty());
    command->Release();
    EXPECT_EQ(component->Release(), 3u) << "the three held above";
}

TEST_F(Components, DerivedLinksFormAChainWhoseEndIsTheTopObject)
{
    CVeskComponent* base = new CVeskComponent("base");
    CVeskComponent* middle = new CVeskComponent("middle");
    CVeskComponent* top = new CVeskComponent("top");

    ASSERT_EQ(Link(base, middle), 1);
    ASSERT_EQ(Link(middle, top), 1);
    EXPECT_EQ(ObjectAt(base, "derived"), Unknown(middle));
    EXPECT_EQ(ObjectAt(base, "*derived"), Unknown(middle));
    for (CVeskComponent* component : {base, middle, top})
        EXPECT_EQ(ObjectAt(component, "topObject"), Unknown(top));

    Ref<CVeskGenericData> text(CVeskGdString::Allocate("top"));
    EXPECT_EQ(base->SetProperty("*derived", text.get()), 0);
    EXPECT_EQ(base->m_Derived, Unknown(middle));
    EXPECT_EQ(base->SetProperty("derived", text.get()), 0);

    // The links hold no references: each component goes with its creator's release.
    EXPECT_EQ(Link(middle, nullptr), 1);
    EXPECT_EQ(middle->m_Derived, nullptr);
    EXPECT_EQ(ObjectAt(base, "topObject"), Unknown(middle));
    EXPECT_EQ(Link(base, nullptr), 1);
    for (CVeskComponent* component : {base, middle, top})
        EXPECT_EQ(component->Release(), 0u);
}

TEST_F(Components, WritingWatchStartsTheTraceWhateverTheBoolean)
{
    Capture capture;
    CVeskComponent* component = new CVeskComponent("watched");
    EXPECT_EQ(Shown(component, "*watch"), "None");
    Ref<CVeskGenericData> number(CVeskGdDouble::Allocate(1));
    EXPECT_EQ(component->SetProperty("*watch", number.get()), 0);
    component->AddRef();
    component->Release();
    EXPECT_EQ(capture.AllDumps(), "");

    EXPECT_EQ(component->SetProperty("*watch", CVeskGdBoolean::Allocate(0)), 1);
    component->AddRef();
    component->Release();
    EXPECT_EQ(capture.AllDumps(), "CVeskCOMObject::AddRef RefCount:2\n"
                                  "CVeskCOMObject::InternalRelease RefCount:1\n");
    CVeskCOMObject::SetDebugObj(nullptr);
    component->Release();
}

TEST_F(Components, EnumeratorDescribesTheSixPropertiesAndMonitorSeesLifetimes)
{
    CVeskComponent::SetAllocationMonitor(&Monitor);
    CVeskComponent* component = new CVeskComponent("listed");
    CVeskPropertyEnum* properties = component->GetPropertyEnumerator();
    std::vector<std::string> described = Described(properties);
    properties->Delete();
    EXPECT_EQ(described, (std::vector<std::string>{
                             "*derived|&CVeskComponent::AsteriskDerived|IUnknown|2",
                             "*name|&CVeskComponent::m_sName|String|0",
                             "*watch|&CVeskComponent::AsteriskWatch|Boolean|2",
                             "derived|&CVeskComponent::m_Derived|IVeskCommand|0",
                             "name|&CVeskComponent::m_sName|String|0",
                             "topObject|&CVeskComponent::TopObject|Any|2",
                         }));
    component->Release();
    CVeskComponent::SetAllocationMonitor(nullptr);
    delete new CVeskComponent("unseen");
    EXPECT_EQ(s_monitored, (std::vector<std::string>{"+listed", "-listed"}));
}
