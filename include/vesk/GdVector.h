#pragma once

// The ordered, heterogeneous list value. Copies share one storage block until one of them
// changes (copy on write); the functions sort, forEach, transform, find and filter are function
// objects read as properties of the vector.

#include <vector>

#include "vesk/FunctionObj.h"
#include "vesk/GenericData.h"

// The storage block that vectors share. A block with a count above 1 is never changed in place.
struct VESK_API CVeskGdVectorRep {
    std::vector<CVeskGenericData*> m_vElements; // each entry owns one reference; none is null
    LONG m_nRefCount;                           // the vectors sharing this block
};

class VESK_API CVeskGdVector : public CVeskGenericData {
public:
    explicit CVeskGdVector(int size = 0);
    ~CVeskGdVector() override;

    // A vector of size Nones.
    static CVeskGdVector* Allocate(int size);
    static void SetAllocationMonitor(AllocationMonitor monitor);

    int GetSize() const;
    // The element itself with a reference for the caller, or null out of range.
    CVeskGenericData* GetElement(int index);
    // As GetElement, after making the block private, so the element may be changed alone.
    CVeskGenericData* GetElementForUpdate(int index);
    // Stores value (not a copy); an index at or past the end grows the vector with None.
    // A negative index yields 0.
    int SetElement(int index, CVeskGenericData* value);
    // Below 1 drops the block.
    void SetSize(int size);

    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override;

    DataType GetType() const override;
    void Print(std::ostream& stream) const override;
    void Write(CDorlArchive& archive) const override;
    void Read(CDorlArchive& archive) override;
    // Shares the block: constant time.
    CVeskGenericData* Copy() override;
    int _IsEqual(CVeskGenericData* other) override;
    int _Assign(CVeskGenericData* other) override;
    int _DescribeProperty(int index, CDorlString* name, CDorlString* description, CDorlString* type,
                          CVeskPropertyEnum::ReadOnlyStatus* status) override;

    CVeskGdVectorRep* m_pRep;
};

// The base of the five functions: holds the vector they work on.
class VESK_API CVeskGdVectorFunctionObj : public CVeskFunctionObj {
public:
    CVeskGdVectorFunctionObj(const CDorlString& name, const CDorlString& description,
                             CVeskGdVector* vector);
    ~CVeskGdVectorFunctionObj() override;

    CVeskGdVector* m_poVector;
    CVeskCommandContext* m_poContext = nullptr; // the call under way, for messages
};

// Sort, forEach, transform and filter call a predicate.
class VESK_API CVeskGdVectorPredicateFunctionObj : public CVeskGdVectorFunctionObj {
public:
    using CVeskGdVectorFunctionObj::CVeskGdVectorFunctionObj;
    ~CVeskGdVectorPredicateFunctionObj() override;

    IVeskCommand* m_poPredicate = nullptr;
    int m_bErrorReported = 0;

protected:
    // Reports at most one message for the life of this function object.
    void ReportOnce(const char* message);
    void DropPredicate();
};

class VESK_API CVeskGdVectorSortFunctionObj : public CVeskGdVectorPredicateFunctionObj {
public:
    using CVeskGdVectorPredicateFunctionObj::CVeskGdVectorPredicateFunctionObj;
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;
    // The order of the sort: the predicate's answer, or the natural order of one type.
    bool Less(CVeskGenericData* left, CVeskGenericData* right);
};

class VESK_API CVeskGdVectorForEachFunctionObj : public CVeskGdVectorPredicateFunctionObj {
public:
    using CVeskGdVectorPredicateFunctionObj::CVeskGdVectorPredicateFunctionObj;
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;
};

class VESK_API CVeskGdVectorTransformFunctionObj : public CVeskGdVectorPredicateFunctionObj {
public:
    using CVeskGdVectorPredicateFunctionObj::CVeskGdVectorPredicateFunctionObj;
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;
};

class VESK_API CVeskGdVectorFindAllFunctionObj : public CVeskGdVectorPredicateFunctionObj {
public:
    using CVeskGdVectorPredicateFunctionObj::CVeskGdVectorPredicateFunctionObj;
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;
};

class VESK_API CVeskGdVectorFindFunctionObj : public CVeskGdVectorFunctionObj {
public:
    using CVeskGdVectorFunctionObj::CVeskGdVectorFunctionObj;
    ~CVeskGdVectorFindFunctionObj() override;
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;

    CVeskGenericData* m_poObject = nullptr;
    int m_bIndexes = 1;
};
