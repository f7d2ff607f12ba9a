#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

// One member or function of every kind of entry, over a component so that names it does not
// know go on to the component's map.
class CGauge : public CVeskComponent {
    VESK_DECLARE_PROPERTY_MAP(CGauge)

public:
    CGauge() : CVeskComponent("gauge") { VESK_FILL_PROPERTY_MAP(); }
    ~CGauge() override
    {
        for (IUnknown* held : {m_pSource, m_pPeer})
            if (held)
                held->Release();
        ++s_nDestroyed;
    }

    static CVeskPropertyMap<CGauge>& Map() { return sm_PropertyMap; }

    int Scale(CVeskCommandContext* context)
    {
        double factor = 0;
        context->GetParam("factor", &factor, 0);
        if (!context->CanProceed(0))
            return 1;
        m_dLevel *= factor;
        context->SetReturnValueNoRef(CVeskGdDouble::Allocate(m_dLevel));
        return 1;
    }
    int Alarm(int* pValue, int bSet)
    {
        ++m_nAlarmCalls;
        if (bSet)
            m_bAlarm = *pValue;
        else
            *pValue = m_bAlarm;
        return m_bAnswer;
    }
    int Reading(CVeskGenericData** ppValue, int bSet)
    {
        if (bSet)
            return (*ppValue)->GetType() == CVeskGenericData::dtNumber;
        (*ppValue)->Release();
        *ppValue = CVeskGdDouble::Allocate(m_dLevel * 2);
        return 1;
    }
    int Peer(IUnknown** ppValue, int bSet)
    {
        if (!bSet) {
            if (m_bAnswer && (*ppValue = m_pPeer))
                m_pPeer->AddRef(); // a read hands over a reference
            return m_bAnswer;
        }
        if (*ppValue)
            (*ppValue)->AddRef();
        if (m_pPeer)
            m_pPeer->Release();
        m_pPeer = *ppValue;
        return m_bAnswer;
    }

    CDorlString m_sLabel = "dial";
    int m_bReady = 1;
    double m_dLevel = 2.5;
    IUnknown* m_pSource = nullptr;
    IUnknown* m_pPeer = nullptr;
    int m_bAlarm = 0;
    int m_bAnswer = 1;
    int m_nAlarmCalls = 0;
    static inline int s_nDestroyed = 0;
};

VESK_BEGIN_PROPERTY_MAP(CGauge, CVeskComponent)
    VESK_STRING_PROPERTY("label", m_sLabel, VeskReadWrite)
    VESK_BOOLEAN_PROPERTY("ready", m_bReady, VeskReadOnly)
    VESK_DOUBLE_PROPERTY("level", m_dLevel, VeskReadWrite)
    VESK_INTERFACE_PROPERTY("source", m_pSource, IID_IVeskCommand, "", VeskReadWrite)
    VESK_FUNCTION_PROPERTY("Scale", Scale)
    VESK_NOTIFIED_BOOLEAN_PROPERTY("alarm", Alarm)
    VESK_NOTIFIED_GD_PROPERTY("reading", Reading)
    VESK_NOTIFIED_INTERFACE_PROPERTY("peer", Peer, IID_IVeskCommand, "")
VESK_END_PROPERTY_MAP()

class PropertyMaps : public StartedTest {};

std::string Shown(CVeskGenericData* value) { return value ? Printed(value) : "<null>"; }
// What reading the named property shows, its reference given back.
template <class T> std::string Read(T* object, const char* name)
{
    return Shown(Ref<CVeskGenericData>(object->GetProperty(name, 0)).get());
}

} // namespace

TEST_F(PropertyMaps, MembersAreWrittenOnlyWithTheirTypeAndOnlyWhenWritable)
{
    CGauge* gauge = new CGauge();
    Ref<CVeskGenericData> text(CVeskGdString::Allocate("knob"));
    Ref<CVeskGenericData> number(CVeskGdDouble::Allocate(7));
    Ref<CVeskGenericData> yes(CVeskGdBoolean::Allocate(0));
    struct Case {
        const char* name;
        CVeskGenericData* value;
        int mapResult; // the map alone: -1 unknown, 0 refused, 1 written
    } cases[] = {
        {"label", number.get(), 0}, {"label", text.get(), 1},   {"ready", yes.get(), 0},
        {"level", text.get(), 0},   {"level", number.get(), 1}, {"name", text.get(), -1},
        {"alarm", number.get(), 0}, {"Scale", number.get(), 0}, {"nothing", text.get(), -1},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(CGauge::Map().SetProperty(gauge, c.name, c.value), c.mapResult) << c.name;
        EXPECT_EQ(gauge->SetProperty(c.name, c.value), c.mapResult == 1 ? 1 : 0) << c.name;
    }
    EXPECT_EQ(std::string(gauge->m_sLabel), "knob");
    EXPECT_EQ(gauge->m_bReady, 1);
    EXPECT_EQ(gauge->m_dLevel, 7.0);
    EXPECT_EQ(std::string(gauge->m_sName), "gauge");
    EXPECT_EQ(gauge->m_nAlarmCalls, 0) << "a wrong type never reaches the function";

    for (const char* name : {"label", "ready", "level", "source", "Scale", "alarm", "reading",
                             "peer", "name", "topObject"})
        EXPECT_EQ(gauge->GetProperty(name, 1), nullptr) << name;
    EXPECT_EQ(gauge->GetProperty("nothing", 0), nullptr);
    gauge->Release();
}

TEST_F(PropertyMaps, InterfaceMembersTakeObjectsOrNullAndReadNullForNothing)
{
    CGauge* gauge = new CGauge();
    CVeskComponent* other = new CVeskComponent("other");
    Ref<CVeskGdObject> otherValue(CVeskGdObject::Allocate(other));
    other->Release(); // the value holds it now

    EXPECT_EQ(Read(gauge, "source"), "Null");
    EXPECT_EQ(gauge->SetProperty("source", otherValue.get()), 1);
    EXPECT_EQ(gauge->m_pSource, otherValue->GetObjectA());
    Ref<CVeskGenericData> text(CVeskGdString::Allocate("x"));
    EXPECT_EQ(gauge->SetProperty("source", text.get()), 0);
    IUnknown* before = gauge->m_pSource;
    IUnknown* lacking = before;
    EXPECT_EQ(CVeskInterfacePropertySet(otherValue.get(), IID_IVeskDataStore, "", &lacking, 0), 0);
    EXPECT_EQ(lacking, before);
    EXPECT_EQ(CVeskInterfacePropertySet(otherValue.get(), IID_IVeskCommand, "", &lacking, 1), 0);
    {
        Ref<CVeskGenericData> read(gauge->GetProperty("source", 0));
        EXPECT_EQ(static_cast<CVeskGdObject*>(read.get())->GetObjectA(), before);
    }
    // Null clears and gives back the reference: the other component lives on the value alone.
    EXPECT_EQ(gauge->SetProperty("source", CVeskGdNull::Allocate()), 1);
    EXPECT_EQ(gauge->m_pSource, nullptr);
    EXPECT_EQ(other->ExternalAddRef(), 2u);
    other->ExternalRelease();
    gauge->Release();
}

TEST_F(PropertyMaps, NotifiedPropertiesLeaveReadsAndWritesToTheirFunction)
{
    CGauge* gauge = new CGauge();
    Ref<CVeskGenericData> number(CVeskGdDouble::Allocate(3));
    auto read = [&](const char* name) { return Read(gauge, name); };

    EXPECT_EQ(read("alarm"), "False");
    EXPECT_EQ(gauge->SetProperty("alarm", CVeskGdBoolean::Allocate(1)), 1);
    EXPECT_EQ(read("alarm"), "True");
    EXPECT_EQ(read("reading"), "5");
    EXPECT_EQ(gauge->SetProperty("reading", number.get()), 1);
    EXPECT_EQ(gauge->SetProperty("reading", CVeskGdNull::Allocate()), 0);
    EXPECT_EQ(read("peer"), "Null") << "1 and no interface";

    CVeskComponent* other = new CVeskComponent("other");
    {
        Ref<CVeskGenericData> otherValue(CVeskGdObject::Allocate(other));
        other->Release();
        EXPECT_EQ(gauge->SetProperty("peer", otherValue.get()), 1);
    }
    EXPECT_EQ(Read(Ref<CVeskGenericData>(gauge->GetProperty("peer", 0)).get(), "name"), "other");

    gauge->m_bAnswer = 0;
    EXPECT_EQ(read("alarm"), "None");
    EXPECT_EQ(read("peer"), "None");
    EXPECT_EQ(gauge->SetProperty("alarm", CVeskGdBoolean::Allocate(0)), 0) << "the function's 0";
    EXPECT_EQ(gauge->SetProperty("peer", CVeskGdNull::Allocate()), 1) << "1 whatever it says";
    EXPECT_EQ(gauge->m_pPeer, nullptr);
    gauge->Release();
}

TEST_F(PropertyMaps, FunctionPropertyHandsOutAFunctionThatKeepsItsObjectAlive)
{
    CGauge* gauge = new CGauge();
    int destroyed = CGauge::s_nDestroyed;
    CVeskGenericData* scale = gauge->GetProperty("Scale", 0);
    ASSERT_EQ(scale->GetType(), CVeskGenericData::dtObject);
    EXPECT_EQ(Read(scale, "name") + " " + Read(scale, "description"), "Scale &CGauge::Scale");
    EXPECT_EQ(scale->SetProperty("name", CVeskGdNull::Allocate()), 0);
    EXPECT_EQ(scale->GetPropertyEnumerator(), nullptr);

    gauge->Release();
    EXPECT_EQ(CGauge::s_nDestroyed, destroyed) << "the function holds the gauge";
    {
        CVeskCommandContext context;
        context.AddParam(DorlPchNil, 4.0);
        EXPECT_EQ(scale->CallMethod(&context), 1);
        EXPECT_EQ(Shown(Ref<CVeskGenericData>(context.GetReturnValue()).get()), "10");
    }
    scale->Release();
    EXPECT_EQ(CGauge::s_nDestroyed, destroyed + 1);
}

TEST_F(PropertyMaps, EnumeratorListsTheClassThenItsBasesAndResetsTheChain)
{
    CGauge* gauge = new CGauge();
    CVeskPropertyEnum* properties = gauge->GetPropertyEnumerator();
    std::vector<std::string> all = Described(properties);
    std::vector<std::string> own(all.begin(), all.begin() + 8);
    EXPECT_EQ(own, (std::vector<std::string>{
                       "Scale|&CGauge::Scale|Function|0",
                       "alarm|&CGauge::Alarm|Boolean|2",
                       "label|&CGauge::m_sLabel|String|1",
                       "level|&CGauge::m_dLevel|Number|1",
                       "peer|&CGauge::Peer|IVeskCommand|2",
                       "reading|&CGauge::Reading|Any|2",
                       "ready|&CGauge::m_bReady|Boolean|0",
                       "source|&CGauge::m_pSource|IVeskCommand|1",
                   }));
    ASSERT_EQ(all.size(), 14u) << "then the component's six";
    EXPECT_EQ(all[8], "*derived|&CVeskComponent::AsteriskDerived|IUnknown|2");

    properties->Reset();
    EXPECT_EQ(Described(properties), all);
    properties->Delete(); // the component's enumerator goes with it
    gauge->Release();
}

TEST_F(PropertyMaps, MapReplacesAndDeletesItsItems)
{
    struct Counted {
        explicit Counted(int* pDeleted) : m_pDeleted(pDeleted) {}
        virtual ~Counted() { ++*m_pDeleted; }
        int* m_pDeleted;
    };
    int deleted = 0;
    {
        CVeskPtrMap<Counted> map;
        Counted* first = new Counted(&deleted);
        map.Set("b", first);
        map.Set("a", new Counted(&deleted));
        map.Set("b", new Counted(&deleted));
        EXPECT_EQ(deleted, 1);
        EXPECT_NE(map.Lookup("b"), first);
        EXPECT_EQ(map.Lookup("c"), nullptr);
    }
    EXPECT_EQ(deleted, 3);
}

namespace {

class CLateGauge : public CVeskComponent {
    VESK_DECLARE_PROPERTY_MAP(CLateGauge)

public:
    CLateGauge() : CVeskComponent("late") { VESK_FILL_PROPERTY_MAP(); }
    static int Filled() { return sm_bPropertyMapFilled; }
    double m_dLevel = 0;
};

VESK_BEGIN_PROPERTY_MAP(CLateGauge, CVeskComponent)
    VESK_DOUBLE_PROPERTY("level", m_dLevel, VeskReadWrite)
VESK_END_PROPERTY_MAP()

std::atomic<int> s_nFills{0};
void CountFill() { ++s_nFills; }

} // namespace

TEST_F(PropertyMaps, FirstInstancesBuiltAtOnceOnManyThreadsFillTheMapOnce)
{
    ASSERT_EQ(CLateGauge::Filled(), 0) << "no instance yet";
    int flag = 0;
    std::atomic<int> waiting{8};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            for (--waiting; waiting > 0;)
                std::this_thread::yield();
            VeskFillPropertyMap(&flag, &CountFill);
            CLateGauge* gauge = new CLateGauge();
            Ref<CVeskGenericData> one(CVeskGdDouble::Allocate(1));
            gauge->SetProperty("level", one.get());
            gauge->Release();
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(s_nFills.load(), 1);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(CLateGauge::Filled(), 1);
    CLateGauge* gauge = new CLateGauge();
    CVeskPropertyEnum* properties = gauge->GetPropertyEnumerator();
    EXPECT_EQ(Described(properties).size(), 7u);
    properties->Delete();
    gauge->Release();
}
