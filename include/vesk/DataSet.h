#pragma once

// Data sets: a table seen through a cursor. The application's subclass owns the rows and answers
// the eleven pure On... operations below; the base class turns those answers into the call
// protocol, into values, into display text and sort keys, into a serialised stream and into the
// flat element walk of IVeskTree. CVeskDataSet adds that the columns of the current row read as
// properties.
//
// Column indexes count from 0 here and from 1 in the script functions. Whatever a subclass gets
// as a column index comes from a caller (a script may ask "GetValue" of column 99), so its
// On... operations answer indexes out of range with a null cell, an empty name or type 0.

#include <cstdint>
#include <map>

#include <dorl/DorlString.h>

#include "vesk/Component.h"
#include "vesk/VeskExport.h"

// The walk over elements that a tree view does. A data set is flat: its elements are Numbers
// holding row ids, and the operations of a tree with children answer as a leaf would.
struct IVeskTree : public IUnknown {
    // The element of the first row, a reference for the caller.
    virtual CVeskGenericData* STDMETHODCALLTYPE GetFirstElement() = 0;
    // Moves pElement in place to the next row and yields that row's element with the reference
    // made for it by GetFirstElement, or null at the end.
    virtual CVeskGenericData* STDMETHODCALLTYPE GetNextElement(CVeskGenericData* pElement) = 0;
    // Ends a walk; pElement (may be null) is released.
    virtual void STDMETHODCALLTYPE ReleaseElements(CVeskGenericData* pElement) = 0;
    // Gives back one element that GetNextElement handed out; null is accepted.
    virtual void STDMETHODCALLTYPE ReleaseElement(CVeskGenericData* pElement) = 0;
    // The children of an element; null, as for a leaf.
    virtual CVeskGenericData* STDMETHODCALLTYPE GetFirstChild(CVeskGenericData* pElement) = 0;
    // Non-zero when the element has children.
    virtual int STDMETHODCALLTYPE HasChildren(CVeskGenericData* pElement) = 0;
    // The text of one cell of the element's row, or with bSortKey its sort key. *pbOK says
    // whether there was such a cell.
    virtual CDorlString STDMETHODCALLTYPE GetElementText(CVeskGenericData* pElement,
                                                         const CDorlString& colName, int bSortKey,
                                                         int* pbOK) = 0;
    // The order of two elements by a column: below 0, 0 or above 0; -2 when the tree leaves
    // the comparison to the caller's sort keys.
    virtual int STDMETHODCALLTYPE CompareElements(CVeskGenericData* pFirst,
                                                  CVeskGenericData* pSecond,
                                                  const CDorlString& colName) = 0;
    virtual void STDMETHODCALLTYPE ExpandElement(CVeskGenericData* pElement) = 0;
    virtual int STDMETHODCALLTYPE IsExpanded(CVeskGenericData* pElement) = 0;
    virtual void STDMETHODCALLTYPE CollapseElement(CVeskGenericData* pElement) = 0;

protected:
    ~IVeskTree() = default;
};

class VESK_API CVeskDataSetBase : public CVeskComponent {
    VESK_DECLARE_INTERFACE_MAP(CVeskDataSetBase)
    VESK_DECLARE_PROPERTY_MAP(CVeskDataSetBase)

public:
    // The column types that OnGetColType reports; "SetColType" overrides a column with one of
    // the four time types.
    enum ColumnType {
        ctNull = 0,         // nothing is read
        ctInteger = 1,      // raw cell int*
        ctString = 2,       // raw cell char*
        ctDouble = 3,       // raw cell double*
        ctBoolean = 4,      // raw cell int*
        ctTime = 5,         // double* of seconds since 1970, shown in the set's time format
        ctTimeSpan = 6,     // double* of seconds, shown as hours, minutes and seconds
        ctReadableTime = 7, // double* of seconds since 1970, shown as a long date
        ctJustTime = 8      // double* of seconds since 1970, shown as the time of day
    };

    CVeskDataSetBase();
    ~CVeskDataSetBase() override;

    // Writes the whole table, rows 0 to OnGetNumRows() - 1, and puts the cursor back.
    int OnSerialise(CVeskGdSerialiser* pSerialiser) override;

    // The format of Time columns, for CDorlTime; "%x %X" unless set.
    CDorlString GetTimeFormatA() { return m_sTimeFormat; }
    void SetTimeFormat(CDorlString format) { m_sTimeFormat = format; }

    // The type of a column with the overrides of "SetColType" applied.
    int GetColumnType(int nColumn);
    // The value of a cell of the current row, a reference for the caller; never null.
    CVeskGenericData* GetColumnValue(int nColumn);
    // As above by name; an unknown name is reported and reads as 0.
    CVeskGenericData* GetColumnValue(const CDorlString& name);

    // What the subclass answers. The cursor is the subclass's: OnNext moves it one row on
    // (non-zero when there was a further row), OnReset puts it on the first row.
    virtual int OnNext() = 0;
    // The raw cell of the current row (see ColumnType), or null; valid until the cursor moves.
    virtual void* OnGetValue(int nColumn) = 0;
    virtual int OnGetNumCols() = 0;
    virtual CDorlString OnGetColName(int nColumn) = 0;
    // Negative when there is no such column.
    virtual int OnGetColIndex(const CDorlString& name) = 0;
    virtual int OnGetColType(int nColumn) = 0;
    // The set passes nOrder 1; what other orders mean is the subclass's.
    virtual int OnSort(const CDorlString& colName, int nOrder) = 0;
    virtual int OnReset() = 0;
    virtual int OnGetRowId() = 0;
    // Non-zero when the cursor now stands on that row. A subclass that is to be serialised
    // numbers its rows 0 to OnGetNumRows() - 1.
    virtual int OnSetRow(int nRowId) = 0;
    virtual int OnGetNumRows() = 0;

    // Script functions. Each returns 1; failures show in the value it returns.
    int Next(CVeskCommandContext* context);
    int Reset(CVeskCommandContext* context);
    int GetValue(CVeskCommandContext* context);
    int Sort(CVeskCommandContext* context);
    int GetRowId(CVeskCommandContext* context);
    int SetRow(CVeskCommandContext* context);
    int SetColType(CVeskCommandContext* context);
    int SetType(CVeskCommandContext* context);
    int GetNumRows(CVeskCommandContext* context);
    int GetNumCols(CVeskCommandContext* context);
    int GetColName(CVeskCommandContext* context);

    VESK_BEGIN_INTERFACE_PART(Tree, IVeskTree)
        CVeskGenericData* STDMETHODCALLTYPE GetFirstElement() override;
        CVeskGenericData* STDMETHODCALLTYPE GetNextElement(CVeskGenericData * pElement) override;
        void STDMETHODCALLTYPE ReleaseElements(CVeskGenericData * pElement) override;
        void STDMETHODCALLTYPE ReleaseElement(CVeskGenericData * pElement) override;
        CVeskGenericData* STDMETHODCALLTYPE GetFirstChild(CVeskGenericData * pElement) override;
        int STDMETHODCALLTYPE HasChildren(CVeskGenericData * pElement) override;
        CDorlString STDMETHODCALLTYPE GetElementText(CVeskGenericData * pElement,
                                                     const CDorlString& colName, int bSortKey,
                                                     int* pbOK) override;
        int STDMETHODCALLTYPE CompareElements(CVeskGenericData * pFirst, CVeskGenericData * pSecond,
                                              const CDorlString& colName) override;
        void STDMETHODCALLTYPE ExpandElement(CVeskGenericData * pElement) override;
        int STDMETHODCALLTYPE IsExpanded(CVeskGenericData * pElement) override;
        void STDMETHODCALLTYPE CollapseElement(CVeskGenericData * pElement) override;
    VESK_END_INTERFACE_PART(Tree)

    CDorlString m_sTimeFormat;
    // The elements of a walk, by row id, each with the one reference that GetNextElement hands
    // over. The map never releases them: once handed out they are the caller's.
    std::map<int, CVeskGenericData*> m_RowElements;
    // Column type overrides by column index; they stay for the life of the set.
    std::map<int, int> m_ColTypes;
    // What GetElementText gives for the pseudo-columns "Type" and "Icon".
    CDorlString m_sType;

private:
    CVeskGenericData* FirstElement();
    CVeskGenericData* NextElement(CVeskGenericData* pElement);
    void ForgetElements(CVeskGenericData* pElement);
    CDorlString ElementText(CVeskGenericData* pElement, const CDorlString& colName, int bSortKey,
                            int* pbOK);
    CDorlString CellText(int nType, void* pCell, int bSortKey);
    void SerialiseCell(CVeskGdSerialiser* pSerialiser, int nType, void* pCell);
};

// A data set whose columns in the current row read as properties, before the functions: a
// column hides a function of the same name. Still abstract.
class VESK_API CVeskDataSet : public CVeskDataSetBase {
public:
    CVeskDataSet();
    ~CVeskDataSet() override;

    // bByRef yields null: a cell has no storage of its own.
    CVeskGenericData* GetProperty(const CDorlString& name, int bByRef) override;
    // The functions and the component's properties, then the columns.
    CVeskPropertyEnum* GetPropertyEnumerator() override;
};

// Lists what the enumerator of the data set's base lists, then one read-only entry per column.
class VESK_API CVeskDataSetObjPropEnum : public CVeskPropertyEnum {
public:
    // Takes over pBaseEnum; pDataSet must outlive the enumerator.
    CVeskDataSetObjPropEnum(CVeskPropertyEnum* pBaseEnum, CVeskDataSet* pDataSet);

    void Reset() override;
    int Next(CDorlString* pName, CDorlString* pDescription, CDorlString* pType,
             ReadOnlyStatus* pStatus) override;
    int GetCurrentValue(CVeskGenericData** ppValue) override;
    void Delete() override;

    int m_nColumn;                  // -1 while the base enumerator is being listed
    CVeskPropertyEnum* m_pBaseEnum; // owned
    CVeskDataSet* m_pDataSet;       // no reference held

protected:
    ~CVeskDataSetObjPropEnum() override;
};
