// The vector value and its five functions. Vectors share one storage block until one of them
// changes it; every change goes through MakeWritable, which decides between changing the block in
// place and cloning it.

#include "vesk/GdVector.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include <dorl/DorlProbe.h>
#include <standin/Sync.h>

#include "data/GdInternal.h"
#include "vesk/CommandContext.h"
#include "vesk/GdObject.h"

namespace {

CVeskGenericData::AllocationMonitor s_pfnVectorMonitor = nullptr;

CDorlProbedLong& VectorCount()
{
    static CDorlProbedLong s_count(VESK_GD_PROBE_PATH, "Vector", 0, nullptr);
    return s_count;
}

CVeskGdVectorRep* NewRep()
{
    CVeskGdVectorRep* rep = new CVeskGdVectorRep();
    rep->m_nRefCount = 1;
    return rep;
}

// Drops one vector's share of a block; the last one releases the elements in index order.
void ReleaseRep(CVeskGdVectorRep* rep)
{
    if (!rep || InterlockedDecrement(&rep->m_nRefCount) != 0)
        return;
    for (CVeskGenericData* element : rep->m_vElements)
        element->Release();
    delete rep;
}

void AppendNone(std::vector<CVeskGenericData*>& elements, size_t newSize)
{
    while (elements.size() < newSize)
        elements.push_back(CVeskGdNone::Allocate());
}

// The block to use from now on, private to the caller and of newSize elements. The caller owns
// one share of rep and stores the result in its m_pRep.
CVeskGdVectorRep* MakeWritable(CVeskGdVectorRep* rep, int newSize)
{
    size_t size = static_cast<size_t>(newSize);
    // A share that another thread drops meanwhile only makes us clone needlessly.
    if (__atomic_load_n(&rep->m_nRefCount, __ATOMIC_ACQUIRE) == 1) {
        std::vector<CVeskGenericData*>& elements = rep->m_vElements;
        while (elements.size() > size) {
            CVeskGenericData* last = elements.back();
            elements.pop_back();
            last->Release();
        }
        // Doubling past the new size keeps appending one by one amortised constant.
        if (size > elements.capacity())
            elements.reserve(2 * size);
        AppendNone(elements, size);
        return rep;
    }

    CVeskGdVectorRep* clone = NewRep();
    clone->m_vElements.reserve(size);
    size_t kept = std::min(size, rep->m_vElements.size());
    for (size_t i = 0; i < kept; ++i) {
        CVeskGenericData* element = rep->m_vElements[i];
        CVeskGenericData* copy = element->Copy();
        // An indirect has no copy. No entry may be null, so both blocks hold that same indirect,
        // each with a reference of its own: a write through it is seen by both vectors.
        if (!copy) {
            element->AddRef();
            copy = element;
        }
        clone->m_vElements.push_back(copy);
    }
    AppendNone(clone->m_vElements, size);
    ReleaseRep(rep);
    return clone;
}

CVeskGenericData* Shared(CVeskGenericData* value)
{
    value->AddRef();
    return value;
}

// Each read of a function property makes a new function object; the value holds the only
// reference on it.
CVeskGenericData* WrapFunction(CVeskFunctionObj* function)
{
    CVeskGenericData* value = CVeskGdObject::Allocate(function, 1);
    function->Release();
    return value;
}

// The positional parameters of one predicate call, in the order in which the predicate fetches
// them; the context adds them in reverse.
CVeskGenericData* CallPredicate(IVeskCommand* predicate, CVeskGenericData* first,
                                CVeskGenericData* second = nullptr)
{
    CVeskCommandContext context;
    if (second)
        context.AddParam(DorlPchNil, second);
    context.AddParam(DorlPchNil, first);
    predicate->CallMethod(&context);
    return context.GetReturnValueOnce();
}

// A Boolean answer, or null when the predicate answered something else.
const CVeskGdBoolean* AsBoolean(const CVeskGenericData* value)
{
    if (!value || value->GetType() != CVeskGenericData::dtBoolean)
        return nullptr;
    return static_cast<const CVeskGdBoolean*>(value);
}

// A bottom-up merge sort. Each pass merges runs from one buffer into the other, so whatever less
// answers, and however inconsistently, every item lands exactly once: the result is a
// permutation and the number of comparisons is bounded by n log n. Merging takes the right item
// only when it is strictly less, which also keeps equal items in their order.
template <class T, class Less> void MergeSort(std::vector<T>& items, Less less)
{
    size_t count = items.size();
    if (count < 2)
        return;
    std::vector<T> scratch(count);
    T* from = items.data();
    T* to = scratch.data();
    for (size_t width = 1; width < count; width *= 2) {
        for (size_t low = 0; low < count; low += 2 * width) {
            size_t middle = std::min(low + width, count);
            size_t high = std::min(low + 2 * width, count);
            size_t left = low;
            size_t right = middle;
            size_t out = low;
            while (left < middle && right < high)
                to[out++] = less(from[right], from[left]) ? from[right++] : from[left++];
            while (left < middle)
                to[out++] = from[left++];
            while (right < high)
                to[out++] = from[right++];
        }
        std::swap(from, to);
    }
    if (from != items.data())
        std::copy(from, from + count, items.data());
}

// Numbers alone never disagree in type, so their natural order needs no messages and no virtual
// calls; sorting the keys beside the pointers saves a trip to each element per comparison.
void SortNumbers(std::vector<CVeskGenericData*>& elements)
{
    std::vector<std::pair<double, CVeskGenericData*>> keyed;
    keyed.reserve(elements.size());
    for (CVeskGenericData* element : elements)
        keyed.emplace_back(static_cast<CVeskGdDouble*>(element)->m_dValue, element);
    MergeSort(keyed, [](const auto& left, const auto& right) { return left.first < right.first; });
    for (size_t i = 0; i < keyed.size(); ++i)
        elements[i] = keyed[i].second;
}

bool AllNumbers(const std::vector<CVeskGenericData*>& elements)
{
    for (const CVeskGenericData* element : elements)
        if (element->GetType() != CVeskGenericData::dtNumber)
            return false;
    return true;
}

} // namespace

// The vector --------------------------------------------------------------------------------------

CVeskGdVector::CVeskGdVector(int size) : m_pRep(nullptr)
{
    if (size > 0)
        SetSize(size);
    vesk::CountCreated(VectorCount(), s_pfnVectorMonitor, this, "Vector");
}

CVeskGdVector::~CVeskGdVector()
{
    ReleaseRep(m_pRep);
    vesk::CountDestroyed(VectorCount(), s_pfnVectorMonitor, this, "Vector");
}

CVeskGdVector* CVeskGdVector::Allocate(int size) { return new CVeskGdVector(size); }

void CVeskGdVector::SetAllocationMonitor(AllocationMonitor monitor)
{
    s_pfnVectorMonitor = monitor;
}

int CVeskGdVector::GetSize() const
{
    return m_pRep ? static_cast<int>(m_pRep->m_vElements.size()) : 0;
}

CVeskGenericData* CVeskGdVector::GetElement(int index)
{
    if (index < 0 || index >= GetSize())
        return nullptr;
    return Shared(m_pRep->m_vElements[index]);
}

CVeskGenericData* CVeskGdVector::GetElementForUpdate(int index)
{
    if (index < 0 || index >= GetSize())
        return nullptr;
    m_pRep = MakeWritable(m_pRep, GetSize());
    return Shared(m_pRep->m_vElements[index]);
}

int CVeskGdVector::SetElement(int index, CVeskGenericData* value)
{
    if (index < 0)
        return 0;
    if (index < GetSize())
        m_pRep = MakeWritable(m_pRep, GetSize());
    else
        SetSize(index + 1);
    // Taken before the old one goes: value may be the element it replaces.
    value->AddRef();
    CVeskGenericData*& slot = m_pRep->m_vElements[index];
    CVeskGenericData* old = slot;
    slot = value;
    old->Release();
    return 1;
}

void CVeskGdVector::SetSize(int size)
{
    if (size < 1) {
        ReleaseRep(m_pRep);
        m_pRep = nullptr;
        return;
    }
    if (!m_pRep)
        m_pRep = NewRep();
    m_pRep = MakeWritable(m_pRep, size);
}

CVeskGenericData* CVeskGdVector::GetProperty(const CDorlString& name, int bByRef)
{
    if (bByRef)
        return nullptr;
    if (name == "name" || name == "*name") {
        static CVeskGdString s_name("Vector");
        return vesk::SharedName(s_name);
    }
    if (name == "length")
        return CVeskGdDouble::Allocate(GetSize());
    if (name == "Sort")
        return WrapFunction(new CVeskGdVectorSortFunctionObj("sort", "Sorts Vectors", this));
    if (name == "_ForEach")
        return WrapFunction(
            new CVeskGdVectorForEachFunctionObj("forEach", "Iterates over a vector", this));
    if (name == "_Transform")
        return WrapFunction(
            new CVeskGdVectorTransformFunctionObj("transform", "Transforms a vector", this));
    if (name == "_Find")
        return WrapFunction(
            new CVeskGdVectorFindFunctionObj("find", "finds an item in a vector", this));
    if (name == "_Filter")
        return WrapFunction(
            new CVeskGdVectorFindAllFunctionObj("filter", "filters all items in a vector", this));
    return nullptr;
}

CVeskGenericData::DataType CVeskGdVector::GetType() const { return dtVector; }

void CVeskGdVector::Print(std::ostream& stream) const
{
    stream << "[";
    for (int i = 0; i < GetSize(); ++i) {
        if (i)
            stream << ", ";
        m_pRep->m_vElements[i]->Print(stream);
    }
    stream << "]";
}

void CVeskGdVector::Write(CDorlArchive& archive) const
{
    archive << GetSize();
    for (int i = 0; i < GetSize(); ++i) {
        const CVeskGenericData* element = m_pRep->m_vElements[i];
        archive << static_cast<unsigned char>(element->GetType());
        element->Write(archive);
    }
}

void CVeskGdVector::Read(CDorlArchive& archive)
{
    vesk::ArchiveNesting nesting;
    if (nesting.TooDeep(archive))
        return;
    int count = 0;
    archive >> count;
    // Every element takes at least its type byte, so a larger count comes from a damaged
    // archive; it must not make us allocate for elements that cannot be there.
    if (count > 0 && static_cast<size_t>(count) > archive.GetRemaining())
        count = static_cast<int>(archive.GetRemaining());
    SetSize(count);
    for (int i = 0; i < count; ++i) {
        unsigned char type = 0;
        archive >> type;
        CVeskGenericData* poData = GenericAllocate(static_cast<DataType>(type));
        if (!poData) {
            // Without the type's form there is no telling where the next element starts.
            VESK_GD_ASSERT(poData);
            return;
        }
        if (poData->GetType() == dtBoolean) {
            // The shared Booleans take no value: the int picks which of the two to store.
            int value = 0;
            archive >> value;
            poData->Release();
            poData = CVeskGdBoolean::Allocate(value);
        } else {
            poData->Read(archive);
        }
        SetElement(i, poData);
        poData->Release();
    }
}

CVeskGenericData* CVeskGdVector::Copy()
{
    CVeskGdVector* copy = new CVeskGdVector();
    if (m_pRep) {
        InterlockedIncrement(&m_pRep->m_nRefCount);
        copy->m_pRep = m_pRep;
    }
    return copy;
}

int CVeskGdVector::_IsEqual(CVeskGenericData* other)
{
    CVeskGdVector* vector = static_cast<CVeskGdVector*>(other);
    if (vector->m_pRep == m_pRep)
        return 1;
    if (vector->GetSize() != GetSize())
        return 0;
    for (int i = 0; i < GetSize(); ++i)
        if (!m_pRep->m_vElements[i]->IsEqual(vector->m_pRep->m_vElements[i]))
            return 0;
    return 1;
}

int CVeskGdVector::_Assign(CVeskGenericData* other)
{
    CVeskGdVectorRep* rep = static_cast<CVeskGdVector*>(other)->m_pRep;
    if (rep == m_pRep)
        return 1;
    if (rep)
        InterlockedIncrement(&rep->m_nRefCount);
    ReleaseRep(m_pRep);
    m_pRep = rep;
    return 1;
}

int CVeskGdVector::_DescribeProperty(int index, CDorlString* name, CDorlString* description,
                                     CDorlString* type, CVeskPropertyEnum::ReadOnlyStatus* status)
{
    if (index == 1)
        return CVeskGenericData::_DescribeProperty(0, name, description, type, status);
    if (index != 0)
        return 0;
    *name = "length";
    *description = "Length of vector";
    *type = "Number";
    *status = CVeskPropertyEnum::ReadOnly;
    return 1;
}

// The functions --------------------------------------------------------------------------------

CVeskGdVectorFunctionObj::CVeskGdVectorFunctionObj(const CDorlString& name,
                                                   const CDorlString& description,
                                                   CVeskGdVector* vector)
    : CVeskFunctionObj(name, description), m_poVector(vector)
{
    m_poVector->AddRef();
}

CVeskGdVectorFunctionObj::~CVeskGdVectorFunctionObj() { m_poVector->Release(); }

CVeskGdVectorPredicateFunctionObj::~CVeskGdVectorPredicateFunctionObj() { DropPredicate(); }

void CVeskGdVectorPredicateFunctionObj::ReportOnce(const char* message)
{
    if (m_bErrorReported)
        return;
    m_bErrorReported = 1;
    m_poContext->OutputErrorString("%s", message);
}

// The function object may be called again, with another predicate or none.
void CVeskGdVectorPredicateFunctionObj::DropPredicate()
{
    if (m_poPredicate)
        m_poPredicate->Release();
    m_poPredicate = nullptr;
}

int CVeskGdVectorSortFunctionObj::CallMethod(CVeskCommandContext* context)
{
    m_poContext = context;
    context->GetParam("Predicate", &m_poPredicate, 1);
    if (context->CanProceed(0) && m_poVector->m_pRep) {
        CVeskGdVectorRep*& rep = m_poVector->m_pRep;
        rep = MakeWritable(rep, m_poVector->GetSize());
        if (!m_poPredicate && AllNumbers(rep->m_vElements))
            SortNumbers(rep->m_vElements);
        else
            MergeSort(rep->m_vElements, [this](CVeskGenericData* left, CVeskGenericData* right) {
                return Less(left, right);
            });
    }
    DropPredicate();
    m_poContext = nullptr;
    return 1;
}

bool CVeskGdVectorSortFunctionObj::Less(CVeskGenericData* left, CVeskGenericData* right)
{
    if (m_poPredicate) {
        CVeskGenericData* answer = CallPredicate(m_poPredicate, left, right);
        const CVeskGdBoolean* boolean = AsBoolean(answer);
        bool result = boolean && boolean->m_bValue;
        if (!boolean)
            ReportOnce("Invalid Types.");
        if (answer)
            answer->Release();
        return result;
    }

    CVeskGenericData::DataType type = left->GetType();
    if (right->GetType() != type) {
        ReportOnce("Invalid Types. Two elements did not have the same type.");
        return false;
    }
    switch (type) {
    case CVeskGenericData::dtBoolean:
        return static_cast<CVeskGdBoolean*>(left)->m_bValue <
               static_cast<CVeskGdBoolean*>(right)->m_bValue;
    case CVeskGenericData::dtNumber:
        return static_cast<CVeskGdDouble*>(left)->m_dValue <
               static_cast<CVeskGdDouble*>(right)->m_dValue;
    case CVeskGenericData::dtString:
        return static_cast<CVeskGdString*>(left)->m_sValue <
               static_cast<CVeskGdString*>(right)->m_sValue;
    default:
        ReportOnce("Invalid Type in Vector.");
        return false;
    }
}

// A Null given for the predicate leaves none: with nothing to call, the function does nothing.
int CVeskGdVectorForEachFunctionObj::CallMethod(CVeskCommandContext* context)
{
    m_poContext = context;
    context->GetParam("Predicate", &m_poPredicate, 0);
    if (context->CanProceed(0) && m_poPredicate) {
        for (int i = 0; i < m_poVector->GetSize(); ++i) {
            CVeskGenericData* element = m_poVector->GetElement(i);
            CVeskCommandContext call;
            call.AddParamNoRef(DorlPchNil, element);
            call.AddParam(DorlPchNil, static_cast<double>(i + 1));
            m_poPredicate->CallMethod(&call);
        }
    }
    DropPredicate();
    m_poContext = nullptr;
    return 1;
}

int CVeskGdVectorTransformFunctionObj::CallMethod(CVeskCommandContext* context)
{
    m_poContext = context;
    context->GetParam("Predicate", &m_poPredicate, 0);
    if (context->CanProceed(0) && m_poPredicate && m_poVector->m_pRep) {
        m_poVector->m_pRep = MakeWritable(m_poVector->m_pRep, m_poVector->GetSize());
        for (int i = 0; i < m_poVector->GetSize(); ++i) {
            CVeskGenericData* element = m_poVector->GetElement(i);
            CVeskGenericData* result = CallPredicate(m_poPredicate, element);
            element->Release();
            if (!result)
                result = CVeskGdNone::Allocate();
            m_poVector->SetElement(i, result);
            result->Release();
        }
    }
    DropPredicate();
    m_poContext = nullptr;
    return 1;
}

int CVeskGdVectorFindAllFunctionObj::CallMethod(CVeskCommandContext* context)
{
    m_poContext = context;
    context->GetParam("predicate", &m_poPredicate, 0);
    CVeskGdVector* result = CVeskGdVector::Allocate(0);
    if (context->CanProceed(0) && m_poPredicate) {
        for (int i = 0; i < m_poVector->GetSize(); ++i) {
            CVeskGenericData* element = m_poVector->GetElement(i);
            CVeskGenericData* answer = CallPredicate(m_poPredicate, element);
            const CVeskGdBoolean* boolean = AsBoolean(answer);
            if (!boolean)
                ReportOnce("Invalid Types.");
            if (!boolean || boolean->m_bValue)
                result->SetElement(result->GetSize(), element);
            if (answer)
                answer->Release();
            element->Release();
        }
    }
    context->SetReturnValueNoRef(result);
    DropPredicate();
    m_poContext = nullptr;
    return 1;
}

CVeskGdVectorFindFunctionObj::~CVeskGdVectorFindFunctionObj()
{
    if (m_poObject)
        m_poObject->Release();
}

int CVeskGdVectorFindFunctionObj::CallMethod(CVeskCommandContext* context)
{
    m_poContext = context;
    context->GetParam("object", &m_poObject, 0);
    // Absent, it keeps what an earlier call left: 1 on a fresh function object.
    context->GetParam("indexes", &m_bIndexes, 1);
    CVeskGenericData* result = nullptr;
    if (context->CanProceed(0) && m_poObject && m_poVector->m_pRep) {
        for (int i = 0; i < m_poVector->GetSize() && !result; ++i) {
            CVeskGenericData* element = m_poVector->m_pRep->m_vElements[i];
            if (!element->IsEqual(m_poObject))
                continue;
            if (m_bIndexes)
                result = CVeskGdDouble::Allocate(i + 1);
            else
                result = Shared(element);
        }
        if (!result && m_bIndexes)
            result = CVeskGdDouble::Allocate(0);
    }
    if (!result)
        result = CVeskGdNull::Allocate();
    context->SetReturnValueNoRef(result);
    if (m_poObject)
        m_poObject->Release();
    m_poObject = nullptr;
    m_poContext = nullptr;
    return 1;
}
