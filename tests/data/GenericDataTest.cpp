#include <cmath>
#include <limits>
#include <sstream>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class GenericData : public StartedTest {};

// What the debug callback and the allocation monitors were told, in order.
std::string s_calls;
std::vector<void*> s_monitored;

void RecordCallback(int bAddRef, int count)
{
    s_calls += std::to_string(bAddRef) + ":" + std::to_string(count) + " ";
}

void RecordMonitor(void* object, const char* typeName, int created)
{
    s_calls += typeName + std::to_string(created) + " ";
    s_monitored.push_back(object);
}

// The answers of several calls, in the order given, as a string of digits.
std::string Flags(std::initializer_list<int> answers)
{
    std::string digits;
    for (int answer : answers)
        digits += std::to_string(answer);
    return digits;
}

} // namespace

TEST_F(GenericData, SharedValuesAreSingleObjectsWithoutACount)
{
    EXPECT_EQ(CVeskGdBoolean::Allocate(5), CVeskGdBoolean::Allocate(1));
    EXPECT_NE(CVeskGdBoolean::Allocate(0), CVeskGdBoolean::Allocate(1));
    EXPECT_EQ(CVeskGdNull::Allocate(), CVeskGdNull::Allocate());
    EXPECT_EQ(CVeskGdNone::Allocate(), CVeskGdNone::Allocate());

    CVeskGenericData* shared[] = {CVeskGdBoolean::Allocate(1), CVeskGdNull::Allocate(),
                                  CVeskGdNone::Allocate()};
    for (CVeskGenericData* value : shared) {
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(value->Release(), 1u);
        EXPECT_EQ(value->AddRef(), 1u);
        // Still usable after more releases than references.
        EXPECT_EQ(value->Copy(), value);
        EXPECT_FALSE(Printed(value).empty());
    }
}

TEST_F(GenericData, CountedValuesLiveUntilTheirLastRelease)
{
    long before = Probe("Double");
    CVeskGdDouble* number = CVeskGdDouble::Allocate(2.5);
    EXPECT_EQ(Probe("Double"), before + 1);
    EXPECT_EQ(number->AddRef(), 2u);
    EXPECT_EQ(number->Release(), 1u);
    EXPECT_EQ(number->Release(), 0u);
    EXPECT_EQ(Probe("Double"), before);

    // Copy makes a new value for numbers and strings, with its own count.
    Ref<CVeskGdString> text(CVeskGdString::Allocate("abc"));
    Ref<CVeskGenericData> copy(text->Copy());
    EXPECT_NE(copy.get(), text.get());
    EXPECT_EQ(Text(copy.get()), "abc");
    text->m_sValue = "changed";
    EXPECT_EQ(Text(copy.get()), "abc");
}

TEST_F(GenericData, EqualityAndAssignmentNeedTheSameType)
{
    CVeskGenericData* none = CVeskGdNone::Allocate();
    CVeskGenericData* null = CVeskGdNull::Allocate();
    CVeskGenericData* yes = CVeskGdBoolean::Allocate(1);
    Ref<CVeskGdDouble> nan(CVeskGdDouble::Allocate(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(Flags({none->IsEqual(none), none->Assign(none), null->IsEqual(null),
                     null->Assign(null), null->IsEqual(none), nan->IsEqual(nan.get()),
                     yes->IsEqual(CVeskGdBoolean::Allocate(7)),
                     yes->IsEqual(CVeskGdBoolean::Allocate(0))}),
              "00110010");

    Ref<CVeskGdDouble> one(CVeskGdDouble::Allocate(1.0)), two(CVeskGdDouble::Allocate(2.0));
    Ref<CVeskGdString> oneText(CVeskGdString::Allocate("1"));
    EXPECT_EQ(Flags({one->IsEqual(oneText.get()), one->Assign(oneText.get()),
                     oneText->Assign(one.get())}),
              "000");
    EXPECT_EQ(Printed(one.get()) + Text(oneText.get()), "11");
    // Strings compare all their bytes, embedded zeros included.
    Ref<CVeskGdString> a(CVeskGdString::Allocate(CDorlString("a\0b", 3)));
    Ref<CVeskGdString> b(CVeskGdString::Allocate(CDorlString("a\0c", 3)));
    EXPECT_EQ(Flags({one->IsEqual(two.get()), one->Assign(two.get()), one->IsEqual(two.get()),
                     a->IsEqual(b.get()), b->Assign(a.get()), a->IsEqual(b.get())}),
              "011011");
    EXPECT_EQ(one->m_dValue, 2.0);
}

TEST_F(GenericData, BooleansTakeNoNewValue)
{
    Capture capture;
    CVeskGenericData* yes = CVeskGdBoolean::Allocate(1);
    EXPECT_EQ(yes->Assign(CVeskGdBoolean::Allocate(0)), 0);
    EXPECT_EQ(Printed(yes), "True");
    // Reading a Boolean takes nothing from the archive: the following number still reads.
    CDorlArchive out;
    out << 0 << 4.5;
    CDorlArchive in(out.GetData(), out.GetSize());
    double next = 0;
    int skipped = 0;
    in >> *yes >> skipped >> next;
    EXPECT_EQ(next, 4.5);
    EXPECT_EQ(capture.Asserted(), "0@GenericData;0@GenericData;");
}

TEST_F(GenericData, NamePropertiesAnswerByValueOnly)
{
    Ref<CVeskGdDouble> number(CVeskGdDouble::Allocate(3.0));
    Ref<CVeskGdString> text(CVeskGdString::Allocate("abc"));
    CVeskGenericData* values[] = {number.get(), text.get(), CVeskGdBoolean::Allocate(0),
                                  CVeskGdNull::Allocate(), CVeskGdNone::Allocate()};
    const char* names[] = {"Number", "String", "Boolean", "Null", "None"};
    for (int i = 0; i < 5; ++i) {
        SCOPED_TRACE(names[i]);
        EXPECT_EQ(values[i]->GetProperty("name", 1), nullptr);
        EXPECT_EQ(values[i]->GetProperty("*name", 1), nullptr);
        Ref<CVeskGenericData> name(values[i]->GetProperty("name", 0));
        EXPECT_EQ(Text(name.get()), names[i]);
        Ref<CVeskGenericData> starName(values[i]->GetProperty("*name", 0));
        EXPECT_EQ(starName.get(), name.get());
        EXPECT_EQ(values[i]->GetProperty("Name", 0), nullptr);
        EXPECT_EQ(values[i]->GetProperty("nothing", 0), nullptr);
        EXPECT_EQ(values[i]->SetProperty("name", number.get()), 0);
        Capture capture;
        CVeskCommandContext context;
        EXPECT_EQ(values[i]->CallMethod(&context), 0);
    }

    // One shared name string per class, whichever value is asked.
    Ref<CVeskGdDouble> other(CVeskGdDouble::Allocate(4.0));
    Ref<CVeskGenericData> first(number->GetProperty("name", 0));
    Ref<CVeskGenericData> second(other->GetProperty("name", 0));
    EXPECT_EQ(first.get(), second.get());

    EXPECT_EQ(number->GetProperty("length", 0), nullptr);
    Ref<CVeskGenericData> length(text->GetProperty("length", 0));
    ASSERT_EQ(length->GetType(), CVeskGenericData::dtNumber);
    EXPECT_EQ(Printed(length.get()), "3");
    EXPECT_EQ(text->GetProperty("length", 1), nullptr);
}

TEST_F(GenericData, QueryInterfaceAnswersUnknownAndCommandOnly)
{
    Ref<CVeskGdDouble> number(CVeskGdDouble::Allocate(1.0));
    void* pv = nullptr;
    EXPECT_EQ(number->QueryInterface(IID_IVeskCommand, &pv), S_OK);
    EXPECT_EQ(pv, static_cast<IVeskCommand*>(number.get()));
    EXPECT_EQ(number->Release(), 1u);
    EXPECT_EQ(number->QueryInterface(IID_IUnknown, &pv), S_OK);
    EXPECT_EQ(number->Release(), 1u);

    void* untouched = &pv;
    EXPECT_EQ(number->QueryInterface(IID_IVeskDLL, &untouched), E_NOINTERFACE);
    EXPECT_EQ(untouched, &pv);
}

TEST_F(GenericData, EnumeratorsDescribeTheValuesProperties)
{
    Ref<CVeskGdString> text(CVeskGdString::Allocate("abc"));
    CVeskPropertyEnum* properties = text->GetPropertyEnumerator();
    CDorlString name, description, type;
    CVeskPropertyEnum::ReadOnlyStatus status = CVeskPropertyEnum::ReadWrite;
    // One entry as "name|description|type", or "end:" and the name left as it was.
    auto next = [&](CVeskPropertyEnum* entries) {
        if (!entries->Next(&name, &description, &type, &status))
            return "end:" + std::string(name);
        return std::string(name) + "|" + std::string(description) + "|" + std::string(type);
    };
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(next(properties), "length|Length of string|Number");
        EXPECT_EQ(status, CVeskPropertyEnum::ReadOnly);
        EXPECT_EQ(next(properties), "name|Name of object|String");
        name = "kept";
        EXPECT_EQ(next(properties) + next(properties), "end:keptend:kept");
        CVeskGenericData* value = nullptr;
        EXPECT_EQ(properties->GetCurrentValue(&value), 0);
        EXPECT_EQ(value, nullptr);
        properties->Reset();
    }
    // The enumerator holds the value alive.
    CVeskGdDouble* number = CVeskGdDouble::Allocate(1.0);
    CVeskPropertyEnum* numberProperties = number->GetPropertyEnumerator();
    EXPECT_EQ(number->Release(), 1u);
    EXPECT_EQ(next(numberProperties), "name|Name of object|String");
    EXPECT_EQ(next(numberProperties), "end:name");
    long before = Probe("Double");
    numberProperties->Delete();
    EXPECT_EQ(Probe("Double"), before - 1);
    properties->Delete();
}

TEST_F(GenericData, PrintWritesEachTypesText)
{
    Ref<CVeskGdString> text(CVeskGdString::Allocate(CDorlString("a\0\"b", 4)));
    std::ostringstream out;
    out.width(20);
    out << *text;
    EXPECT_EQ(out.str(), std::string("a\0\"b", 4));

    // Numbers follow the stream's own precision and flags.
    Ref<CVeskGdDouble> number(CVeskGdDouble::Allocate(3.14159265));
    EXPECT_EQ(Printed(number.get()), "3.14159");
    std::ostringstream precise;
    precise.precision(3);
    precise << std::fixed << *number;
    EXPECT_EQ(precise.str(), "3.142");
}

TEST_F(GenericData, ArchiveFormsReadBackWithoutTypeBytes)
{
    Ref<CVeskGdDouble> number(CVeskGdDouble::Allocate(-1.25));
    Ref<CVeskGdString> text(CVeskGdString::Allocate(CDorlString("x\0y", 3)));
    CDorlArchive out;
    out << *number << *CVeskGdNull::Allocate() << *CVeskGdNone::Allocate() << *text
        << *CVeskGdBoolean::Allocate(1);
    // Null and None add nothing; the Boolean is an int.
    CDorlArchive expected;
    expected << -1.25 << CDorlString("x\0y", 3) << 1;
    ASSERT_EQ(out.GetSize(), expected.GetSize());
    EXPECT_EQ(std::memcmp(out.GetData(), expected.GetData(), out.GetSize()), 0);

    CDorlArchive in(out.GetData(), out.GetSize());
    Ref<CVeskGdDouble> number2(CVeskGdDouble::Allocate(0));
    Ref<CVeskGdString> text2(CVeskGdString::Allocate(""));
    in >> *number2 >> *CVeskGdNull::Allocate() >> *CVeskGdNone::Allocate() >> *text2;
    EXPECT_EQ(number2->m_dValue, -1.25);
    EXPECT_EQ(Text(text2.get()), std::string("x\0y", 3));
}

TEST_F(GenericData, GenericAllocateGivesEmptyValuesOrNull)
{
    Ref<CVeskGenericData> number(CVeskGenericData::GenericAllocate(CVeskGenericData::dtNumber));
    ASSERT_EQ(number->GetType(), CVeskGenericData::dtNumber);
    EXPECT_EQ(static_cast<CVeskGdDouble*>(number.get())->m_dValue, 0.0);
    Ref<CVeskGenericData> text(CVeskGenericData::GenericAllocate(CVeskGenericData::dtString));
    EXPECT_EQ(Text(text.get()), "");
    EXPECT_EQ(CVeskGenericData::GenericAllocate(CVeskGenericData::dtBoolean),
              CVeskGdBoolean::Allocate(0));
    EXPECT_EQ(CVeskGenericData::GenericAllocate(CVeskGenericData::dtNull), CVeskGdNull::Allocate());
    EXPECT_EQ(CVeskGenericData::GenericAllocate(CVeskGenericData::dtNone), CVeskGdNone::Allocate());
    EXPECT_EQ(CVeskGenericData::GenericAllocate(CVeskGenericData::dtObject), nullptr);
    EXPECT_EQ(CVeskGenericData::GenericAllocate(static_cast<CVeskGenericData::DataType>(8)),
              nullptr);

    // The indirect (0) and types past the last are "Other".
    const char* names[] = {"Other",  "Null",   "Boolean", "Number", "String",
                           "Vector", "Object", "None",    "Other"};
    for (int type = 0; type < 9; ++type)
        EXPECT_STREQ(CVeskGenericData::GetTypeName(static_cast<CVeskGenericData::DataType>(type)),
                     names[type]);
}

TEST_F(GenericData, DebugObjectReportsItsCountChanges)
{
    Capture capture;
    CVeskGdDouble* watched = CVeskGdDouble::Allocate(1.0);
    Ref<CVeskGdDouble> other(CVeskGdDouble::Allocate(2.0));
    CVeskGenericData::SetDebugObj(watched);
    watched->AddRef();
    other->AddRef();
    other->Release();
    watched->Release();
    EXPECT_EQ(capture.AllDumps(), "CVeskGenericData::AddRef RefCount:2\n"
                                  "CVeskGenericData::Release RefCount:1\n");

    capture.Clear();
    s_calls.clear();
    CVeskGenericData::SetDebugCallback(&RecordCallback);
    watched->AddRef();
    watched->Release();
    watched->Release(); // the last: the debug object is cleared
    // A new value at the same address is not watched.
    Ref<CVeskGdDouble> next(CVeskGdDouble::Allocate(3.0));
    next->AddRef();
    next->Release();
    CVeskGenericData::SetDebugCallback(nullptr);
    EXPECT_EQ(s_calls, "1:2 0:1 0:0 ");
    EXPECT_TRUE(capture.dumps.empty());
}

TEST_F(GenericData, CountersAndMonitorsFollowEachClass)
{
    s_calls.clear();
    s_monitored.clear();
    CVeskGdDouble::SetAllocationMonitor(&RecordMonitor);
    CVeskGdString::SetAllocationMonitor(&RecordMonitor);
    long doubles = Probe("Double");
    long strings = Probe("String");
    CVeskGdDouble* number = CVeskGdDouble::Allocate(1.0);
    CVeskGdString* text = CVeskGdString::Allocate("t");
    EXPECT_EQ(Probe("Double"), doubles + 1);
    EXPECT_EQ(Probe("String"), strings + 1);
    number->Release();
    text->Release();
    CVeskGdDouble::SetAllocationMonitor(nullptr);
    CVeskGdString::SetAllocationMonitor(nullptr);
    Ref<CVeskGdDouble> unwatched(CVeskGdDouble::Allocate(2.0));

    EXPECT_EQ(s_calls, "Double1 String1 Double0 String0 ");
    EXPECT_EQ(s_monitored, (std::vector<void*>{number, text, number, text}));
    EXPECT_EQ(Probe("Double"), doubles + 1);
}

TEST_F(GenericData, ProcessInfoHandlerPrintsTheCounters)
{
    CVeskGdBoolean::Allocate(1);
    Ref<CVeskGdString> text(CVeskGdString::Allocate("s"));
    Capture capture;
    ASSERT_EQ(DorlRunProcessInfoHandler("genericData"), 1);
    char expected[200];
    std::snprintf(expected, sizeof expected, "str:%ld  dbl:%ld  bool:%ld  obj:0  ind:0  vec:0\n",
                  Probe("String"), Probe("Double"), Probe("Boolean"));
    EXPECT_EQ(capture.AllDumps(), expected);
    EXPECT_EQ(Probe("Boolean"), 2);
}

namespace {

// During the construction of PureWitness the value part is complete but the class's own table
// is not in place yet, so the call reaches the framework's table, where the operations it leaves
// pure live.
struct Witness {
    // The volatile hop keeps the compiler from resolving the calls itself.
    explicit Witness(CVeskGenericData* value) : hidden(value)
    {
        type = hidden->GetType();
        copy = hidden->Copy();
    }
    CVeskGenericData* volatile hidden;
    CVeskGenericData::DataType type;
    CVeskGenericData* copy;
};

struct PureWitness : CVeskGenericData, Witness {
    PureWitness() : CVeskGenericData(), Witness(static_cast<CVeskGenericData*>(this)) {}
    DataType GetType() const override { return dtNumber; }
    void Print(std::ostream&) const override {}
    void Write(CDorlArchive&) const override {}
    void Read(CDorlArchive&) override {}
    CVeskGenericData* Copy() override { return this; }
};

} // namespace

TEST_F(GenericData, PureOperationsReportAndYieldZero)
{
    Capture capture;
    PureWitness* witness = new PureWitness();
    EXPECT_EQ(witness->type, 0);
    EXPECT_EQ(witness->copy, nullptr);
    EXPECT_EQ(capture.Asserted(), "Pure Virtual Function Call@DLL;Pure Virtual Function Call@DLL;");
    EXPECT_EQ(capture.assertions[0].line, 0);
    EXPECT_EQ(witness->GetType(), CVeskGenericData::dtNumber);
    witness->Release();
}
