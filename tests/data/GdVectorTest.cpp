#include <algorithm>
#include <functional>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class Vector : public StartedTest {};

CVeskGenericData* N(double value) { return CVeskGdDouble::Allocate(value); }
CVeskGenericData* S(const char* value) { return CVeskGdString::Allocate(value); }

CVeskGenericData* Element(CVeskGdVector* vector, int index)
{
    CVeskGenericData* element = vector->GetElement(index);
    element->Release();
    return element;
}

double Number(CVeskGenericData* value) { return static_cast<CVeskGdDouble*>(value)->m_dValue; }

// Sorted addresses of the elements: the same before and after means the same elements.
std::vector<CVeskGenericData*> Members(CVeskGdVector* vector)
{
    std::vector<CVeskGenericData*> members(vector->m_pRep->m_vElements);
    std::sort(members.begin(), members.end());
    return members;
}

class Predicate : public CVeskSimpleCommandObject {
public:
    explicit Predicate(std::function<void(CVeskCommandContext*)> body) : m_body(std::move(body)) {}
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override
    {
        ++calls;
        m_body(context);
        return 1;
    }
    int calls = 0;

private:
    std::function<void(CVeskCommandContext*)> m_body;
};

Predicate* Answering(CVeskGenericData* answer)
{
    return new Predicate(
        [answer](CVeskCommandContext* context) { context->SetReturnValue(answer); });
}

// Calls a function property once on a fresh context filled by fill; yields its return value.
template <class Fill> CVeskGenericData* Call(CVeskGenericData* function, Fill fill)
{
    CVeskCommandContext context;
    fill(context);
    EXPECT_EQ(function->CallMethod(&context), 1);
    return context.GetReturnValueOnce();
}

template <class Fill>
CVeskGenericData* Call(CVeskGenericData* vector, const char* property, Fill fill)
{
    Ref<CVeskGenericData> function(vector->GetProperty(property, 0));
    return Call(function.get(), fill);
}

// For the functions whose effect is on the vector itself.
template <class Fill> void Apply(CVeskGenericData* vector, const char* property, Fill fill)
{
    Ref<CVeskGenericData> result(Call(vector, property, fill));
}

void NoParameters(CVeskCommandContext&) {}

// The printed answer of a find function object; indexes below 0 leaves "indexes" out.
std::string Find(CVeskGenericData* find, CVeskGenericData* object, int indexes = -1)
{
    Ref<CVeskGenericData> result(Call(find, [&](CVeskCommandContext& c) {
        c.AddParam("object", object);
        if (indexes >= 0)
            c.AddParam("indexes", indexes);
    }));
    return Printed(result.get());
}

auto WithPredicate(const char* name, IUnknown* predicate)
{
    return [=](CVeskCommandContext& context) { context.AddParam(name, predicate); };
}

} // namespace

TEST_F(Vector, CopySharesTheBlockUntilOneSideChanges)
{
    Ref<CVeskGdVector> first(MakeVector({N(1), S("a"), CVeskGdBoolean::Allocate(1)}));
    Ref<CVeskGdVector> copy(static_cast<CVeskGdVector*>(first->Copy()));
    EXPECT_EQ(copy->m_pRep, first->m_pRep);
    EXPECT_EQ(Element(copy.get(), 0), Element(first.get(), 0));

    long doubles = Probe("Double");
    Ref<CVeskGenericData> updated(copy->GetElementForUpdate(0));
    EXPECT_NE(copy->m_pRep, first->m_pRep);
    EXPECT_NE(updated.get(), Element(first.get(), 0));
    EXPECT_NE(Element(copy.get(), 1), Element(first.get(), 1));
    EXPECT_EQ(Element(copy.get(), 2), CVeskGdBoolean::Allocate(1));
    EXPECT_EQ(copy->m_pRep->m_vElements.capacity(), 3u); // a clone reserves exactly
    EXPECT_EQ(Probe("Double"), doubles + 1);
    // A private block is changed in place.
    Ref<CVeskGenericData> again(copy->GetElementForUpdate(0));
    EXPECT_EQ(again.get(), updated.get());
    EXPECT_EQ(Probe("Double"), doubles + 1);

    Ref<CVeskGdVector> third(static_cast<CVeskGdVector*>(first->Copy()));
    Ref<CVeskGenericData> seven(N(7));
    EXPECT_EQ(third->SetElement(1, seven.get()), 1);
    EXPECT_EQ(Printed(first.get()), "[1, a, True]");
    EXPECT_EQ(Printed(third.get()), "[1, 7, True]");

    // An indirect has no copy: both blocks keep the same one.
    Ref<CVeskGdIndirect> indirect(CVeskGdIndirect::Allocate());
    first->SetElement(0, indirect.get());
    Ref<CVeskGdVector> fourth(static_cast<CVeskGdVector*>(first->Copy()));
    {
        Capture capture;
        fourth->SetElement(1, seven.get());
        EXPECT_EQ(capture.assertions.size(), 1u);
    }
    EXPECT_EQ(Element(fourth.get(), 0), indirect.get());
    EXPECT_EQ(Element(first.get(), 0), indirect.get());

    // Assign takes the other's block; an empty one drops the block.
    Ref<CVeskGdVector> empty(CVeskGdVector::Allocate(0));
    EXPECT_EQ(third->Assign(first.get()), 1);
    EXPECT_EQ(third->m_pRep, first->m_pRep);
    EXPECT_EQ(third->Assign(empty.get()), 1);
    EXPECT_EQ(third->m_pRep, nullptr);
}

TEST_F(Vector, SizeGrowsWithNoneAndShrinksByReleasing)
{
    Ref<CVeskGdVector> vector(CVeskGdVector::Allocate(0));
    Ref<CVeskGenericData> one(N(1));
    EXPECT_EQ(vector->SetElement(-1, one.get()), 0);
    EXPECT_EQ(vector->m_pRep, nullptr);
    EXPECT_EQ(vector->SetElement(5, one.get()), 1);
    EXPECT_EQ(Element(vector.get(), 5), one.get());
    EXPECT_EQ(Printed(vector.get()), "[None, None, None, None, None, 1]");
    EXPECT_EQ(vector->GetElement(6), nullptr);

    vector->SetSize(2);
    EXPECT_EQ(one->AddRef(), 2u); // the vector gave its reference back
    one->Release();
    vector->SetSize(0);
    EXPECT_EQ(vector->m_pRep, nullptr);
    vector->SetSize(1);
    vector->SetSize(-1);
    EXPECT_EQ(Printed(vector.get()), "[]");

    // Appending one by one moves the elements only a logarithmic number of times.
    int moves = 0;
    for (int i = 0; i < 1000; ++i) {
        const void* before = vector->m_pRep ? vector->m_pRep->m_vElements.data() : nullptr;
        vector->SetElement(i, one.get());
        moves += vector->m_pRep->m_vElements.data() != before;
    }
    EXPECT_LE(moves, 12);
}

TEST_F(Vector, EqualityComparesBlocksThenElements)
{
    Ref<CVeskGdVector> empty1(CVeskGdVector::Allocate(0)), empty2(CVeskGdVector::Allocate(0));
    Ref<CVeskGdVector> none1(CVeskGdVector::Allocate(1)), none2(CVeskGdVector::Allocate(1));
    Ref<CVeskGenericData> noneCopy(none1->Copy());
    EXPECT_EQ(empty1->IsEqual(empty2.get()), 1);
    EXPECT_EQ(empty1->IsEqual(none1.get()), 0);
    EXPECT_EQ(none1->IsEqual(none2.get()), 0);    // None equals nothing, not even None
    EXPECT_EQ(none1->IsEqual(noneCopy.get()), 1); // but a shared block is equal as it stands

    Ref<CVeskGdVector> a(MakeVector({N(1), MakeVector({CVeskGdNull::Allocate()})}));
    Ref<CVeskGdVector> b(MakeVector({N(1), MakeVector({CVeskGdNull::Allocate()})}));
    Ref<CVeskGdVector> c(MakeVector({S("1"), MakeVector({CVeskGdNull::Allocate()})}));
    Ref<CVeskGdVector> shorter(MakeVector({N(1)}));
    EXPECT_EQ(a->IsEqual(b.get()) * 100 + a->IsEqual(c.get()) * 10 + a->IsEqual(shorter.get()),
              100);
}

TEST_F(Vector, PropertiesAndFunctionObjects)
{
    Ref<CVeskGdVector> vector(MakeVector({N(1), N(2)}));
    EXPECT_EQ(PropertyText(vector.get(), "*name") + PropertyText(vector.get(), "length"),
              "Vector2");
    EXPECT_TRUE(!vector->GetProperty("length", 1) && !vector->GetProperty("sort", 0));
    CVeskPropertyEnum* properties = vector->GetPropertyEnumerator();
    CDorlString described[3], type;
    CVeskPropertyEnum::ReadOnlyStatus status;
    for (CDorlString& text : described)
        properties->Next(&text, &type, &type, &status);
    properties->Delete();
    EXPECT_EQ(std::string(described[0]) + std::string(described[1]) + std::string(described[2]),
              "lengthname");

    const char* functions[][2] = {{"Sort", "sort"},
                                  {"_ForEach", "forEach"},
                                  {"_Find", "find"},
                                  {"_Transform", "transform"},
                                  {"_Filter", "filter"}};
    for (auto& function : functions) {
        Ref<CVeskGenericData> object(vector->GetProperty(function[0], 0));
        EXPECT_EQ(PropertyText(object.get(), "name"), function[1]);
    }

    // A function object keeps working on its vector after the caller let go of it.
    CVeskGdVector* held = MakeVector({N(3)});
    Ref<CVeskGenericData> find(held->GetProperty("_Find", 0));
    held->Release();
    Ref<CVeskGenericData> three(N(3));
    EXPECT_EQ(Find(find.get(), three.get()), "1");
}

TEST_F(Vector, FindAnswersWithIndexesElementsOrNull)
{
    Ref<CVeskGdVector> vector(
        MakeVector({S("5"), CVeskGdNone::Allocate(), CVeskGdNull::Allocate(), N(5), N(5)}));
    Ref<CVeskGenericData> five(N(5)), two(N(2));
    auto fresh = [&] { return vector->GetProperty("_Find", 0); };
    Ref<CVeskGenericData> find(fresh());
    EXPECT_EQ(Find(find.get(), five.get()), "4"); // the first match, counted from 1
    EXPECT_EQ(Find(find.get(), CVeskGdNull::Allocate(), 1), "3");
    EXPECT_EQ(Find(find.get(), CVeskGdNone::Allocate(), 1), "0");
    EXPECT_EQ(Find(find.get(), two.get(), 0), "Null");
    // "indexes" absent keeps what the function object had last.
    EXPECT_EQ(Find(find.get(), five.get()), "5");
    Ref<CVeskGenericData> element(
        Call(find.get(), [&](CVeskCommandContext& c) { c.AddParam("object", five.get()); }));
    EXPECT_EQ(element.get(), Element(vector.get(), 3));
    Ref<CVeskGenericData> again(fresh());
    EXPECT_EQ(Find(again.get(), two.get()), "0");

    Ref<CVeskGdVector> empty(CVeskGdVector::Allocate(0));
    Ref<CVeskGenericData> findEmpty(empty->GetProperty("_Find", 0));
    EXPECT_EQ(Find(findEmpty.get(), five.get(), 1), "Null");
    // A call that cannot proceed answers Null as well.
    Capture capture;
    Ref<CVeskGenericData> noObject(Call(again.get(), &NoParameters));
    EXPECT_EQ(noObject.get(), CVeskGdNull::Allocate());
}

TEST_F(Vector, FilterKeepsMatchesAndReportsWrongAnswersOnce)
{
    Ref<CVeskGdVector> vector(MakeVector({N(1), N(5), N(2), N(7)}));
    Ref<Predicate> big(new Predicate([](CVeskCommandContext* c) {
        double value = 0;
        c->GetParam("value", &value, 0);
        c->SetReturnValue(CVeskGdBoolean::Allocate(value > 3));
    }));
    Ref<CVeskGenericData> kept(
        Call(vector.get(), "_Filter", WithPredicate("predicate", big.get())));
    EXPECT_EQ(Printed(kept.get()), "[5, 7]");
    CVeskGdVector* result = static_cast<CVeskGdVector*>(kept.get());
    EXPECT_EQ(Element(result, 1), Element(vector.get(), 3)); // the same objects, not copies

    Capture capture;
    Ref<CVeskGenericData> seven(N(7));
    Ref<Predicate> number(Answering(seven.get()));
    Ref<CVeskGenericData> all(
        Call(vector.get(), "_Filter", WithPredicate("predicate", number.get())));
    EXPECT_EQ(Printed(all.get()), "[1, 5, 2, 7]");
    EXPECT_EQ(capture.AllDumps(), "Invalid Types.\n");

    // A Null predicate leaves nothing to call and an empty result.
    Ref<CVeskGenericData> nothing(Call(vector.get(), "_Filter", [](CVeskCommandContext& c) {
        c.AddParam("predicate", CVeskGdNull::Allocate());
    }));
    EXPECT_EQ(Printed(nothing.get()), "[]");
    EXPECT_EQ(Printed(vector.get()), "[1, 5, 2, 7]");
}

TEST_F(Vector, ForEachAndTransformCallThePredicatePerElement)
{
    Ref<CVeskGdVector> vector(MakeVector({N(10), S("b")}));
    std::string seen;
    Ref<Predicate> record(new Predicate([&](CVeskCommandContext* c) {
        double index = 0;
        CVeskGenericData* element = nullptr;
        c->GetParam("index", &index, 0);
        c->GetParam("element", &element, 0);
        seen += std::to_string(static_cast<int>(index)) + ":" + Printed(element) + " ";
        element->Release();
    }));
    Ref<CVeskGenericData> none(
        Call(vector.get(), "_ForEach", WithPredicate("Predicate", record.get())));
    EXPECT_EQ(seen, "1:10 2:b ");
    EXPECT_EQ(none.get(), CVeskGdNone::Allocate());
    Ref<CVeskGdVector> empty(CVeskGdVector::Allocate(0));
    Apply(empty.get(), "_ForEach", WithPredicate("Predicate", record.get()));
    EXPECT_EQ(record->calls, 2);

    // Transform changes this vector only, not a copy that shared its block.
    Ref<CVeskGenericData> copy(vector->Copy());
    Ref<Predicate> twice(new Predicate([](CVeskCommandContext* c) {
        CVeskGenericData* element = nullptr;
        c->GetParam("element", &element, 0);
        c->SetReturnValueNoRef(
            CVeskGdString::Allocate((Printed(element) + Printed(element)).c_str()));
        element->Release();
    }));
    Apply(vector.get(), "_Transform", WithPredicate("Predicate", twice.get()));
    EXPECT_EQ(Printed(vector.get()), "[1010, bb]");
    EXPECT_EQ(Printed(copy.get()), "[10, b]");
    Ref<Predicate> silent(new Predicate([](CVeskCommandContext*) {}));
    Apply(vector.get(), "_Transform", WithPredicate("Predicate", silent.get()));
    EXPECT_EQ(Printed(vector.get()), "[None, None]");

    // A Null predicate leaves nothing to call.
    for (const char* function : {"_ForEach", "_Transform"})
        Apply(copy.get(), function,
              [](CVeskCommandContext& c) { c.AddParam("Predicate", CVeskGdNull::Allocate()); });
    EXPECT_EQ(Printed(copy.get()), "[10, b]");
}

TEST_F(Vector, SortOrdersByTypeOrPredicateAndReportsOnce)
{
    auto sorted = [](CVeskGdVector* vector) {
        Apply(vector, "Sort", &NoParameters);
        return Printed(vector);
    };
    Ref<CVeskGdVector> booleans(
        MakeVector({CVeskGdBoolean::Allocate(1), CVeskGdBoolean::Allocate(0)}));
    Ref<CVeskGdVector> strings(MakeVector({S("b"), S("ab"), S("B"), S("a")}));
    EXPECT_EQ(sorted(booleans.get()) + sorted(strings.get()), "[False, True][B, a, ab, b]");
    Ref<CVeskGdVector> numbers(MakeVector({N(3), N(-1), N(2), N(-1)}));
    Ref<CVeskGenericData> before(numbers->Copy());
    EXPECT_EQ(sorted(numbers.get()), "[-1, -1, 2, 3]");
    EXPECT_EQ(Printed(before.get()), "[3, -1, 2, -1]");

    Capture capture;
    Ref<CVeskGdVector> mixed(MakeVector({N(3), S("x"), N(1)}));
    Ref<CVeskGenericData> sort(mixed->GetProperty("Sort", 0));
    Ref<CVeskGenericData> once(Call(sort.get(), &NoParameters));
    Ref<CVeskGenericData> twice(Call(sort.get(), &NoParameters)); // the flag stays
    EXPECT_EQ(capture.AllDumps(), "Invalid Types. Two elements did not have the same type.\n");
    capture.Clear();
    Ref<CVeskGdVector> nones(CVeskGdVector::Allocate(2));
    EXPECT_EQ(sorted(nones.get()), "[None, None]");
    EXPECT_EQ(capture.AllDumps(), "Invalid Type in Vector.\n");

    // With a predicate, which a Null stands in for when absent.
    capture.Clear();
    Ref<Predicate> descending(new Predicate([](CVeskCommandContext* c) {
        double left = 0, right = 0;
        c->GetParam("left", &left, 0);
        c->GetParam("right", &right, 0);
        c->SetReturnValue(CVeskGdBoolean::Allocate(left > right));
    }));
    Apply(numbers.get(), "Sort", WithPredicate("Predicate", descending.get()));
    EXPECT_EQ(Printed(numbers.get()), "[3, 2, -1, -1]");
    Apply(numbers.get(), "Sort",
          [](CVeskCommandContext& c) { c.AddParam("Predicate", CVeskGdNull::Allocate()); });
    EXPECT_EQ(Printed(numbers.get()), "[-1, -1, 2, 3]");
    EXPECT_EQ(capture.AllDumps(), "");

    Ref<CVeskGenericData> seven(N(7));
    Ref<Predicate> number(Answering(seven.get()));
    std::vector<CVeskGenericData*> members = Members(numbers.get());
    Apply(numbers.get(), "Sort", WithPredicate("Predicate", number.get()));
    EXPECT_EQ(capture.AllDumps(), "Invalid Types.\n");
    EXPECT_EQ(Members(numbers.get()), members);
}

TEST_F(Vector, SortEndsWithTheSameElementsWhateverThePredicateSays)
{
    std::mt19937 generator(7);
    Ref<CVeskGdVector> vector(CVeskGdVector::Allocate(0));
    for (int i = 0; i < 1000; ++i) {
        Ref<CVeskGenericData> value(
            N(std::uniform_real_distribution<double>(-1e6, 1e6)(generator)));
        vector->SetElement(i, value.get());
    }
    std::vector<CVeskGenericData*> members = Members(vector.get());
    Ref<Predicate> coin(new Predicate([&](CVeskCommandContext* c) {
        c->SetReturnValue(CVeskGdBoolean::Allocate(generator() & 1));
    }));
    Ref<Predicate> always(Answering(CVeskGdBoolean::Allocate(1)));
    for (Predicate* predicate : {coin.get(), always.get()}) {
        Apply(vector.get(), "Sort", WithPredicate("Predicate", predicate));
        EXPECT_EQ(Members(vector.get()), members);
        EXPECT_LE(predicate->calls, 1000 * 10);
    }

    Apply(vector.get(), "Sort", &NoParameters);
    const std::vector<CVeskGenericData*>& elements = vector->m_pRep->m_vElements;
    EXPECT_TRUE(std::is_sorted(elements.begin(), elements.end(),
                               [](CVeskGenericData* left, CVeskGenericData* right) {
                                   return Number(left) < Number(right);
                               }));
    EXPECT_EQ(Members(vector.get()), members);
}

TEST_F(Vector, ArchiveFormReadsBackNestedVectors)
{
    Ref<CVeskGdVector> inner(MakeVector({S("in"), N(2), CVeskGdVector::Allocate(0)}));
    Ref<CVeskGdVector> vector(
        MakeVector({N(1.5), S("x"), CVeskGdNull::Allocate(), CVeskGdNone::Allocate(),
                    CVeskGdBoolean::Allocate(1), CVeskGdBoolean::Allocate(0)}));
    vector->SetElement(6, inner.get());
    CDorlArchive out;
    out << *vector;

    CDorlArchive in(out.GetData(), out.GetSize());
    Ref<CVeskGdVector> read(CVeskGdVector::Allocate(9));
    in >> *read;
    EXPECT_EQ(Printed(read.get()), "[1.5, x, Null, None, True, False, [in, 2, []]]");
    for (int i = 0; i < vector->GetSize(); ++i)
        EXPECT_EQ(Element(read.get(), i)->GetType(), Element(vector.get(), i)->GetType());
    EXPECT_EQ(in.GetRemaining(), 0u);

    // A type without an archive form ends the reading of that vector.
    Capture capture;
    CDorlArchive bad;
    bad << 3 << static_cast<unsigned char>(CVeskGenericData::dtNumber) << 4.0
        << static_cast<unsigned char>(CVeskGenericData::dtObject) << 0;
    CDorlArchive badIn(bad.GetData(), bad.GetSize());
    Ref<CVeskGdVector> partial(CVeskGdVector::Allocate(0));
    badIn >> *partial;
    EXPECT_EQ(Printed(partial.get()), "[4, None, None]");
    EXPECT_EQ(capture.Asserted(), "poData@GenericData;");

    // A count beyond what the archive holds sizes nothing that cannot be there.
    CDorlArchive huge;
    huge << 0x7fffffff;
    CDorlArchive hugeIn(huge.GetData(), huge.GetSize());
    hugeIn >> *read;
    EXPECT_EQ(read->m_pRep, nullptr);

    // Nesting deep enough to exhaust the stack is given up with a message, not followed.
    CDorlArchive deep;
    for (int level = 0; level < 100000; ++level)
        deep << 1 << static_cast<unsigned char>(CVeskGenericData::dtVector);
    deep << 0;
    CDorlArchive deepIn(deep.GetData(), deep.GetSize());
    capture.Clear();
    deepIn >> *read;
    EXPECT_EQ(capture.AllDumps(), "Archive nested deeper than 256 levels: the rest is not read\n");
    EXPECT_TRUE(deepIn.HasFailed());
    EXPECT_EQ(read->GetSize(), 1);
}
