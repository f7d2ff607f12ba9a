#include <sstream>
#include <string>
#include <vector>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class ObjectValue : public StartedTest {};

const IID IID_ITestFace = {0x5e5e0101, 0x0001, 0x0001, {1, 2, 3, 4, 5, 6, 7, 8}};
const IID IID_ITestOther = {0x5e5e0102, 0x0001, 0x0001, {1, 2, 3, 4, 5, 6, 7, 8}};

struct ITestFace : IUnknown {
    virtual int STDMETHODCALLTYPE Value() = 0;
};

// A plain object: two interfaces of its own, neither of the protocol nor of automation.
class CPlain : public CVeskCOMObject {
    VESK_DECLARE_INTERFACE_MAP(CPlain)
    VESK_BEGIN_INTERFACE_PART(TestFace, ITestFace)
        int STDMETHODCALLTYPE Value() override { return 1; }
    VESK_END_INTERFACE_PART(TestFace)
    VESK_BEGIN_INTERFACE_PART(TestOther, ITestFace)
        int STDMETHODCALLTYPE Value() override { return 2; }
    VESK_END_INTERFACE_PART(TestOther)
    LONG Count() const { return m_dwRef; }
};

VESK_BEGIN_INTERFACE_MAP(CPlain, CVeskCOMObject)
    VESK_INTERFACE(IID_ITestFace, TestFace)
    VESK_INTERFACE(IID_ITestOther, TestOther)
VESK_END_INTERFACE_MAP()

// Automation alone, or automation and the protocol together.
class CAutomation : public CVeskCOMObject {
    VESK_DECLARE_INTERFACE_MAP(CAutomation)
    VESK_BEGIN_INTERFACE_PART(Dispatch, IDispatch)
        HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
        HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override
        {
            return E_NOTIMPL;
        }
        HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
        {
            return E_NOTIMPL;
        }
        HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*,
                                         EXCEPINFO*, UINT*) override
        {
            return E_NOTIMPL;
        }
    VESK_END_INTERFACE_PART(Dispatch)
};

VESK_BEGIN_INTERFACE_MAP(CAutomation, CVeskCOMObject)
    VESK_INTERFACE(IID_IDispatch, Dispatch)
VESK_END_INTERFACE_MAP()

class CDual : public CAutomation {
    VESK_DECLARE_INTERFACE_MAP(CDual)
    VESK_BEGIN_INTERFACE_PART(VeskCommand, IVeskCommand)
        CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int) override
        {
            return name == "kind" ? CVeskGdString::Allocate("dual") : nullptr;
        }
        int STDMETHODCALLTYPE SetProperty(const CDorlString&, CVeskGenericData*) override
        {
            return 1;
        }
        int STDMETHODCALLTYPE CallMethod(CVeskCommandContext*) override { return 1; }
        CVeskPropertyEnum* STDMETHODCALLTYPE GetPropertyEnumerator() override { return nullptr; }
    VESK_END_INTERFACE_PART(VeskCommand)
};

VESK_BEGIN_INTERFACE_MAP(CDual, CAutomation)
    VESK_INTERFACE(IID_IVeskCommand, VeskCommand)
VESK_END_INTERFACE_MAP()

// An object of the protocol with one property, "next", that may hold another object.
class CLinked : public CVeskSimpleCommandObject {
public:
    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int) override
    {
        ++reads;
        if (name != "next" || !next)
            return nullptr;
        next->AddRef();
        return next;
    }
    int STDMETHODCALLTYPE SetProperty(const CDorlString& name, CVeskGenericData* value) override
    {
        lastSet = std::string(name) + "=" + Printed(value);
        return 1;
    }
    ~CLinked() override
    {
        if (next)
            next->Release();
    }
    CVeskGenericData* next = nullptr;
    int reads = 0;
    std::string lastSet;
};

} // namespace

TEST_F(ObjectValue, PlainObjectsAreOnlyNamed)
{
    CPlain* plain = new CPlain();
    IUnknown* other = static_cast<IUnknown*>(&plain->m_xTestOther);
    {
        // Kept as it came, or normalised to the object's IUnknown.
        Ref<CVeskGdObject> kept(CVeskGdObject::Allocate(other, 1));
        Ref<CVeskGdObject> normal(CVeskGdObject::Allocate(other, 0));
        EXPECT_EQ(kept->GetObjectA(), other);
        EXPECT_EQ(normal->GetObjectA(), static_cast<IUnknown*>(&plain->m_xTestFace));
        EXPECT_EQ(plain->Count(), 3);
        ASSERT_NE(kept->m_pHelper, nullptr);
        EXPECT_EQ(kept->m_pHelper->GetKind(), CObjectLookupHelper::kindUnknown);
        EXPECT_EQ(kept->GetIVeskCommand(), nullptr);
        // Same object, different stored pointers: not equal.
        EXPECT_EQ(kept->IsEqual(normal.get()), 0);

        Ref<CVeskGenericData> name(kept->GetProperty("name", 0));
        Ref<CVeskGenericData> starName(kept->GetProperty("*name", 0));
        EXPECT_EQ(Text(name.get()), "UnknownObject");
        EXPECT_EQ(starName.get(), name.get());
        CVeskCommandContext context;
        EXPECT_EQ(kept->CallMethod(&context) + kept->SetProperty("x", CVeskGdNull::Allocate()), 0);
        EXPECT_TRUE(!kept->GetProperty("name", 1) && !kept->GetProperty("other", 0) &&
                    !kept->GetPropertyEnumerator());

        Ref<CVeskGenericData> copy(kept->Copy());
        EXPECT_NE(copy.get(), kept.get());
        EXPECT_EQ(copy->IsEqual(kept.get()), 1);
        EXPECT_EQ(plain->Count(), 4);
        // Assigning a value to itself changes nothing.
        EXPECT_EQ(kept->Assign(kept.get()), 1);
        EXPECT_EQ(kept->GetObjectA(), other);
        EXPECT_EQ(plain->Count(), 4);
    }
    EXPECT_EQ(plain->Release(), 0u);
}

TEST_F(ObjectValue, TheFirstQuestionDecidesTheHelper)
{
    Capture capture;
    CDual* dual = new CDual();
    Ref<CVeskGdObject> dualValue(CVeskGdObject::Allocate(dual));
    dual->Release();
    ASSERT_NE(dualValue->m_pHelper, nullptr);
    EXPECT_EQ(dualValue->m_pHelper->GetKind(), CObjectLookupHelper::kindCommand);
    EXPECT_EQ(dualValue->GetIVeskCommand(), static_cast<IVeskCommand*>(&dual->m_xVeskCommand));
    EXPECT_EQ(PropertyText(dualValue.get(), "kind"), "dual");

    // Automation alone: without type information the value keeps its object and no helper.
    CAutomation* automation = new CAutomation();
    Ref<CVeskGdObject> automationValue(
        CVeskGdObject::Allocate(static_cast<IDispatch*>(&automation->m_xDispatch)));
    automation->Release();
    EXPECT_EQ(automationValue->GetObjectA(), static_cast<IUnknown*>(&automation->m_xDispatch));
    EXPECT_EQ(automationValue->m_pHelper, nullptr);
    EXPECT_TRUE(capture.assertions.empty());
    CVeskCommandContext context;
    EXPECT_EQ(automationValue->SetProperty("name", CVeskGdNull::Allocate()) +
                  automationValue->CallMethod(&context),
              0);
    EXPECT_TRUE(!automationValue->GetProperty("name", 0) &&
                !automationValue->GetPropertyEnumerator() && !automationValue->GetIVeskCommand());
    std::string expected;
    for (int i = 0; i < 5; ++i)
        expected += "m_pHelper@GenericData;";
    EXPECT_EQ(capture.Asserted(), expected);
    void* pv = nullptr;
    EXPECT_EQ(automationValue->GetInterface(IID_IDispatch, &pv, DorlPchNil), S_OK);
    static_cast<IUnknown*>(pv)->Release();
}

TEST_F(ObjectValue, CommandObjectsReceiveEveryCall)
{
    CLinked* linked = new CLinked();
    Ref<CVeskGdObject> value(CVeskGdObject::Allocate(linked, 1));
    linked->Release();
    Ref<CVeskGdDouble> number(CVeskGdDouble::Allocate(3));
    EXPECT_EQ(value->SetProperty("size", number.get()), 1);
    EXPECT_EQ(linked->lastSet, "size=3");
    EXPECT_EQ(value->GetProperty("next", 0), nullptr);
    EXPECT_EQ(linked->reads, 1);
    CVeskCommandContext context;
    EXPECT_EQ(value->CallMethod(&context), 0); // the simple object isn't callable
}

TEST_F(ObjectValue, GetInterfaceFollowsANamedPropertyDownAChain)
{
    CLinked* first = new CLinked();
    CLinked* second = new CLinked();
    CPlain* plain = new CPlain();
    Ref<CVeskGdObject> value(CVeskGdObject::Allocate(first, 1));
    void* pv = &pv;

    // Not on the object, and no property to look at.
    EXPECT_EQ(value->GetInterface(IID_ITestFace, &pv, DorlPchNil), E_NOINTERFACE);
    EXPECT_EQ(first->reads, 0);
    EXPECT_EQ(value->GetInterface(IID_ITestFace, &pv, "next"), E_NOINTERFACE);
    EXPECT_EQ(first->reads, 1);

    // A property that holds the object itself ends the search.
    first->next = CVeskGdObject::Allocate(first, 1);
    EXPECT_EQ(value->GetInterface(IID_ITestFace, &pv, "next"), E_NOINTERFACE);
    EXPECT_EQ(first->reads, 2);
    first->next->Release(); // breaks the cycle between first and its own value
    first->next = CVeskGdObject::Allocate(second, 1);
    second->next = CVeskGdObject::Allocate(plain);
    second->Release();

    // Two levels down: first.next is second, second.next is the plain object.
    ITestFace* face = nullptr;
    ASSERT_EQ(value->GetInterface(IID_ITestFace, reinterpret_cast<void**>(&face), "next"), S_OK);
    EXPECT_EQ(face->Value(), 1);
    EXPECT_EQ(plain->Count(), 3); // the caller's reference and the value's one
    face->Release();
    EXPECT_EQ(second->reads, 1);

    Ref<CVeskGdObject> empty(CVeskGdObject::Allocate(nullptr, 1));
    EXPECT_EQ(empty->GetInterface(IID_IUnknown, &pv, "next"), E_NOINTERFACE);
    first->Release();
    plain->Release();
}

TEST_F(ObjectValue, PrintShowsThePointerAndThereIsNoArchiveForm)
{
    Capture capture;
    CPlain* plain = new CPlain();
    Ref<CVeskGdObject> value(CVeskGdObject::Allocate(plain));
    std::ostringstream expected;
    expected << "Object(" << std::hex << static_cast<const void*>(value->GetObjectA()) << ")";
    std::ostringstream printed;
    printed << std::dec << *value;
    EXPECT_EQ(printed.str(), expected.str());

    CDorlArchive archive;
    archive << *value;
    EXPECT_EQ(archive.GetSize(), 0u);
    CDorlArchive in(archive.GetData(), archive.GetSize());
    in >> *value;
    EXPECT_EQ(capture.Asserted(), "false@GenericData;0@GenericData;");
    plain->Release();
}
