#include <thread>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class Indirect : public StartedTest {};

// Checks that a forwarded call runs outside the indirects' lock: another thread can write
// through the same indirect while the call is under way.
class LockProbe : public CVeskSimpleCommandObject {
public:
    explicit LockProbe(CVeskGdIndirect* indirect) : m_pIndirect(indirect) {}
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext*) override
    {
        depthDuringCall = CVeskGdIndirect::GetLockDepth();
        std::thread writer([this] {
            CVeskGdString* text = CVeskGdString::Allocate("written meanwhile");
            m_pIndirect->SetValue(text);
            text->Release();
        });
        writer.join();
        return 7;
    }
    CVeskGdIndirect* m_pIndirect;
    int depthDuringCall = -1;
};

} // namespace

TEST_F(Indirect, AFreshIndirectHoldsNone)
{
    Ref<CVeskGdIndirect> indirect(CVeskGdIndirect::Allocate());
    EXPECT_EQ(indirect->GetType(), CVeskGenericData::dtIndirect);
    EXPECT_EQ(Printed(indirect.get()), "(None)");
    EXPECT_EQ(indirect->IsEqual(indirect.get()), 0);
    EXPECT_EQ(PropertyText(indirect.get(), "name"), "None"); // forwarded to None

    Ref<CVeskGdDouble> number(CVeskGdDouble::Allocate(4));
    indirect->SetValue(number.get());
    EXPECT_EQ(Printed(indirect.get()), "(4)");
    indirect->SetValue(nullptr);
    EXPECT_EQ(indirect->GetValue(0), CVeskGdNone::Allocate());
    EXPECT_EQ(number->AddRef(), 2u); // the indirect gave its reference back
    number->Release();
}

TEST_F(Indirect, FlagsRefuseOrAssign)
{
    Capture capture;
    Ref<CVeskGdIndirect> indirect(CVeskGdIndirect::Allocate());
    Ref<CVeskGdDouble> number(CVeskGdDouble::Allocate(1));
    Ref<CVeskGdDouble> two(CVeskGdDouble::Allocate(2));
    Ref<CVeskGdString> text(CVeskGdString::Allocate("t"));
    indirect->SetValue(number.get());

    indirect->SetFlags(CVeskGdIndirect::flagReadOnly | CVeskGdIndirect::flagAssign);
    indirect->SetValue(two.get());
    EXPECT_EQ(indirect->GetValue(0), number.get());
    EXPECT_EQ(Printed(indirect.get()), "(1)");

    // Assignment changes the present object, which everybody holding it sees.
    indirect->SetFlags(CVeskGdIndirect::flagAssign);
    indirect->SetValue(text.get());
    indirect->SetValue(nullptr);
    EXPECT_EQ(indirect->GetValue(0), number.get());
    indirect->SetValue(two.get());
    EXPECT_EQ(indirect->GetValue(0), number.get());
    EXPECT_EQ(number->m_dValue, 2);

    // A Boolean takes no new value: the assertion of the Boolean speaks.
    indirect->SetFlags(0);
    indirect->SetValue(CVeskGdBoolean::Allocate(0));
    indirect->SetFlags(CVeskGdIndirect::flagAssign);
    indirect->SetValue(CVeskGdBoolean::Allocate(1));
    EXPECT_EQ(indirect->GetValue(0), CVeskGdBoolean::Allocate(0));
    EXPECT_EQ(capture.Asserted(), "0@GenericData;");

    // A fresh indirect in assignment mode ignores a null value.
    Ref<CVeskGdIndirect> fresh(CVeskGdIndirect::Allocate());
    fresh->SetFlags(CVeskGdIndirect::flagAssign);
    fresh->SetValue(nullptr);
    EXPECT_EQ(fresh->GetValue(0), CVeskGdNone::Allocate());
}

TEST_F(Indirect, ChainsAreFollowedToTheInnermostSlot)
{
    Ref<CVeskGdIndirect> outer(CVeskGdIndirect::Allocate());
    Ref<CVeskGdIndirect> inner(CVeskGdIndirect::Allocate());
    Ref<CVeskGdDouble> number(CVeskGdDouble::Allocate(5));
    inner->SetValue(number.get());
    outer->SetValue(inner.get());
    EXPECT_EQ(outer->GetValue(0), number.get());
    Ref<CVeskGenericData> held(outer->GetValue(1));
    EXPECT_EQ(number->AddRef(), 4u);
    number->Release();
    EXPECT_EQ(Printed(outer.get()), "((5))");

    Ref<CVeskGdDouble> six(CVeskGdDouble::Allocate(6));
    outer->SetValue(six.get());
    EXPECT_EQ(inner->GetValue(0), six.get());
    EXPECT_EQ(*outer->GetValuePtr(), inner.get());

    // The read-only flag of the outer one holds, whatever the inner one says.
    outer->SetFlags(CVeskGdIndirect::flagReadOnly);
    outer->SetValue(number.get());
    EXPECT_EQ(inner->GetValue(0), six.get());
    // The inner one's flags decide for a write that reaches it.
    outer->SetFlags(0);
    inner->SetFlags(CVeskGdIndirect::flagReadOnly);
    outer->SetValue(number.get());
    EXPECT_EQ(inner->GetValue(0), six.get());
}

TEST_F(Indirect, OutsideSlotsAreUsedButNotOwned)
{
    CVeskGenericData* slot = CVeskGdDouble::Allocate(1);
    Ref<CVeskGdIndirect> indirect(CVeskGdIndirect::Allocate());
    indirect->SetValuePtr(&slot);
    EXPECT_EQ(indirect->m_poValue, nullptr);
    EXPECT_EQ(indirect->GetValue(0), slot);
    EXPECT_EQ(Printed(indirect.get()), "(null)");

    // A write goes into the outside slot; the owner of the slot keeps the reference.
    Ref<CVeskGdString> text(CVeskGdString::Allocate("t"));
    indirect->SetValue(text.get());
    EXPECT_EQ(slot, text.get());
    EXPECT_EQ(text->AddRef(), 3u);
    text->Release();

    CDorlArchive archive;
    archive << *indirect;
    CDorlArchive expected;
    expected << 0 << 0;
    ASSERT_EQ(archive.GetSize(), expected.GetSize());

    indirect->SetValuePtr(nullptr);
    EXPECT_EQ(indirect->GetValue(0), CVeskGdNone::Allocate());
    EXPECT_EQ(indirect->GetValuePtr(), &indirect->m_poValue);
    EXPECT_EQ(slot, text.get());
    slot->Release();
}

TEST_F(Indirect, CopyIsRefusedAndTheArchiveFormCarriesTheValue)
{
    Capture capture;
    Ref<CVeskGdIndirect> indirect(CVeskGdIndirect::Allocate());
    EXPECT_EQ(indirect->Copy(), nullptr);
    EXPECT_EQ(capture.Asserted(), "0@GenericData;");

    Ref<CVeskGdIndirect> inner(CVeskGdIndirect::Allocate());
    Ref<CVeskGdString> text(CVeskGdString::Allocate("abc"));
    inner->SetValue(text.get());
    indirect->SetValue(inner.get());
    indirect->SetFlags(6);
    CDorlArchive archive;
    archive << *indirect;
    CDorlArchive expected;
    expected << 1 << 6 << static_cast<unsigned char>(CVeskGenericData::dtString)
             << CDorlString("abc");
    ASSERT_EQ(archive.GetSize(), expected.GetSize());
    EXPECT_EQ(std::memcmp(archive.GetData(), expected.GetData(), archive.GetSize()), 0);

    CDorlArchive in(archive.GetData(), archive.GetSize());
    Ref<CVeskGdIndirect> read(CVeskGdIndirect::Allocate());
    in >> *read;
    EXPECT_EQ(read->GetFlags(), 6);
    EXPECT_EQ(Text(read->GetValue(0)), "abc");
    EXPECT_FALSE(in.HasFailed());

    Ref<CVeskGenericData> generic(CVeskGenericData::GenericAllocate(CVeskGenericData::dtIndirect));
    ASSERT_EQ(generic->GetType(), CVeskGenericData::dtIndirect);
    EXPECT_EQ(Printed(generic.get()), "(None)");
}

TEST_F(Indirect, ForwardedCallsRunOutsideTheLock)
{
    Ref<CVeskGdIndirect> indirect(CVeskGdIndirect::Allocate());
    LockProbe* probe = new LockProbe(indirect.get());
    Ref<CVeskGdObject> object(CVeskGdObject::Allocate(probe, 1));
    probe->Release();
    indirect->SetValue(object.get());
    CVeskCommandContext context;
    EXPECT_EQ(indirect->CallMethod(&context), 7);
    EXPECT_EQ(probe->depthDuringCall, 0);
    EXPECT_EQ(Text(indirect->GetValue(0)), "written meanwhile");
    // The call's own reference kept the object alive while the writer replaced it.
    EXPECT_EQ(object->AddRef(), 2u);
    object->Release();
}
