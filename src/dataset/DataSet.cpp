// Data sets: the script functions, cell values and texts, the element walk and the serialised
// form, all built on the cursor that the subclass owns.

#include "vesk/DataSet.h"

#include <dorl/DorlDiag.h>
#include <dorl/DorlTime.h>

#include "dataset/Truncate.h"
#include "vesk/CommandContext.h"
#include "vesk/GdObject.h"
#include "vesk/InterfaceIds.h"

using vesk::TruncateTo64;
using vesk::TruncateToInt;

VESK_BEGIN_INTERFACE_MAP(CVeskDataSetBase, CVeskComponent)
    VESK_INTERFACE(IID_IVeskTree, Tree)
VESK_END_INTERFACE_MAP()

VESK_BEGIN_PROPERTY_MAP(CVeskDataSetBase, CVeskComponent)
    VESK_FUNCTION_PROPERTY("Next", Next)
    VESK_FUNCTION_PROPERTY("Reset", Reset)
    VESK_FUNCTION_PROPERTY("GetValue", GetValue)
    VESK_FUNCTION_PROPERTY("Sort", Sort)
    VESK_FUNCTION_PROPERTY("GetRowId", GetRowId)
    VESK_FUNCTION_PROPERTY("SetRow", SetRow)
    VESK_FUNCTION_PROPERTY("SetColType", SetColType)
    VESK_FUNCTION_PROPERTY("SetType", SetType)
    VESK_FUNCTION_PROPERTY("GetNumRows", GetNumRows)
    VESK_FUNCTION_PROPERTY("GetNumCols", GetNumCols)
    VESK_FUNCTION_PROPERTY("GetColName", GetColName)
VESK_END_PROPERTY_MAP()

namespace {

const char kUnknownColumnType[] = "Unknown column type %d\n";
const char kInvalidColumnName[] = "Invalid column name %s\n";

// The row id that an element (a Number) holds, truncated toward zero.
int ElementRowId(CVeskGenericData* pElement)
{
    return TruncateToInt(static_cast<CVeskGdDouble*>(pElement)->m_dValue);
}

int IsNumber(CVeskGenericData* pElement)
{
    return pElement && pElement->GetType() == CVeskGenericData::dtNumber;
}

double RawDouble(void* pCell) { return pCell ? *static_cast<double*>(pCell) : 0.0; }
int RawInt(void* pCell) { return pCell ? *static_cast<int*>(pCell) : 0; }

void ReturnBoolean(CVeskCommandContext* context, int bValue)
{
    context->SetReturnValueNoRef(CVeskGdBoolean::Allocate(bValue ? 1 : 0));
}

void ReturnNumber(CVeskCommandContext* context, double dValue)
{
    context->SetReturnValueNoRef(CVeskGdDouble::Allocate(dValue));
}

} // namespace

CVeskDataSetBase::CVeskDataSetBase() : CVeskComponent("Vesk"), m_sTimeFormat("%x %X")
{
    VESK_FILL_PROPERTY_MAP();
}

CVeskDataSetBase::~CVeskDataSetBase()
{
    // What is still in the map was never handed out, so nobody else can give it back.
    ForgetElements(nullptr);
}

// Cells ------------------------------------------------------------------------------------------

int CVeskDataSetBase::GetColumnType(int nColumn)
{
    std::map<int, int>::const_iterator found = m_ColTypes.find(nColumn);
    return found != m_ColTypes.end() ? found->second : OnGetColType(nColumn);
}

CVeskGenericData* CVeskDataSetBase::GetColumnValue(int nColumn)
{
    int nType = GetColumnType(nColumn);
    switch (nType) {
    case ctNull:
        return CVeskGdNull::Allocate();
    case ctInteger:
        return CVeskGdDouble::Allocate(RawInt(OnGetValue(nColumn)));
    case ctString: {
        const char* text = static_cast<const char*>(OnGetValue(nColumn));
        return CVeskGdString::Allocate(text ? text : "");
    }
    case ctDouble:
    case ctTime:
    case ctTimeSpan:
    case ctReadableTime:
    case ctJustTime:
        return CVeskGdDouble::Allocate(RawDouble(OnGetValue(nColumn)));
    case ctBoolean:
        return CVeskGdBoolean::Allocate(RawInt(OnGetValue(nColumn)) ? 1 : 0);
    default:
        DorlDump(kUnknownColumnType, nType);
        return CVeskGdDouble::Allocate(0.0);
    }
}

CVeskGenericData* CVeskDataSetBase::GetColumnValue(const CDorlString& name)
{
    int nColumn = OnGetColIndex(name);
    if (nColumn < 0) {
        DorlDump(kInvalidColumnName, static_cast<const char*>(name));
        return CVeskGdDouble::Allocate(0.0);
    }
    return GetColumnValue(nColumn);
}

CDorlString CVeskDataSetBase::CellText(int nType, void* pCell, int bSortKey)
{
    CDorlString text;
    switch (nType) {
    case ctNull:
        break;
    case ctInteger:
        text.Format(bSortKey ? "%010d" : "%d", *static_cast<int*>(pCell));
        break;
    case ctString:
        text = static_cast<const char*>(pCell);
        break;
    case ctDouble:
        text.Format(bSortKey ? "%010.3lf" : "%lf", *static_cast<double*>(pCell));
        break;
    case ctBoolean:
        text = *static_cast<int*>(pCell) ? "true" : "false";
        break;
    case ctTime:
    case ctTimeSpan:
    case ctReadableTime:
    case ctJustTime: {
        // Times sort by their number: the texts of dates do not sort as the dates do.
        double dValue = *static_cast<double*>(pCell);
        if (bSortKey)
            text.Format("%010.3lf", dValue);
        else if (nType == ctTimeSpan)
            text = CDorlTimeSpan(TruncateTo64(dValue)).Format("%H:%M:%S");
        else
            text = CDorlTime(TruncateTo64(dValue))
                       .Format(nType == ctTime           ? static_cast<const char*>(m_sTimeFormat)
                               : nType == ctReadableTime ? "%lx, %X"
                                                         : "%H:%M:%S %p");
        break;
    }
    default:
        DorlDump(kUnknownColumnType, nType);
        break;
    }
    return text;
}

// Script functions ----------------------------------------------------------------------------

int CVeskDataSetBase::Next(CVeskCommandContext* context)
{
    if (!context->CanProceed(0))
        return 1;
    ReturnBoolean(context, OnNext());
    return 1;
}

int CVeskDataSetBase::Reset(CVeskCommandContext* context)
{
    if (!context->CanProceed(0))
        return 1;
    ReturnBoolean(context, OnReset());
    return 1;
}

int CVeskDataSetBase::GetValue(CVeskCommandContext* context)
{
    CVeskGenericData* columnRef = nullptr; // ours once fetched
    context->GetParam("ColumnRef", &columnRef, 0);
    if (context->CanProceed(0)) {
        CVeskGenericData* value = nullptr;
        if (columnRef && columnRef->GetType() == CVeskGenericData::dtNumber)
            value =
                GetColumnValue(TruncateToInt(static_cast<CVeskGdDouble*>(columnRef)->m_dValue) - 1);
        else if (columnRef && columnRef->GetType() == CVeskGenericData::dtString)
            value = GetColumnValue(static_cast<CVeskGdString*>(columnRef)->m_sValue);
        else {
            DorlDump("CVeskDataSetBase::GetValue Invalid Parameter Provided");
            value = CVeskGdNull::Allocate();
        }
        context->SetReturnValueNoRef(value);
    }
    if (columnRef)
        columnRef->Release();
    return 1;
}

int CVeskDataSetBase::Sort(CVeskCommandContext* context)
{
    CDorlString colName;
    context->GetParam("colName", &colName, 0);
    if (!context->CanProceed(0))
        return 1;
    ReturnBoolean(context, OnSort(colName, 1));
    return 1;
}

int CVeskDataSetBase::GetRowId(CVeskCommandContext* context)
{
    if (!context->CanProceed(0))
        return 1;
    ReturnNumber(context, OnGetRowId());
    return 1;
}

int CVeskDataSetBase::SetRow(CVeskCommandContext* context)
{
    double dRowId = 0;
    context->GetParam("rowId", &dRowId, 0);
    if (!context->CanProceed(0))
        return 1;
    ReturnBoolean(context, OnSetRow(TruncateToInt(dRowId)));
    return 1;
}

int CVeskDataSetBase::SetColType(CVeskCommandContext* context)
{
    static const char* const timeTypes[] = {"Time", "TimeSpan", "ReadableTime", "JustTime"};
    CDorlString colName;
    CDorlString colType;
    context->GetParam("colName", &colName, 0);
    context->GetParam("colType", &colType, 0);
    if (!context->CanProceed(0))
        return 1;

    int bResult = 1;
    int nColumn = OnGetColIndex(colName);
    if (nColumn < 0) {
        DorlDump(kInvalidColumnName, static_cast<const char*>(colName));
        bResult = 0;
    }
    int nType = -1;
    for (int i = 0; i < 4; ++i)
        if (colType.CompareNoCase(timeTypes[i]) == 0)
            nType = ctTime + i;
    if (nType < 0) {
        DorlDump("Invalid column type %s\n", static_cast<const char*>(colType));
        bResult = 0;
    } else if (nColumn >= 0)
        m_ColTypes[nColumn] = nType;
    ReturnBoolean(context, bResult);
    return 1;
}

int CVeskDataSetBase::SetType(CVeskCommandContext* context)
{
    CDorlString colType;
    context->GetParam("colType", &colType, 0);
    if (!context->CanProceed(0))
        return 1;
    m_sType = colType;
    ReturnBoolean(context, 1);
    return 1;
}

int CVeskDataSetBase::GetNumRows(CVeskCommandContext* context)
{
    if (!context->CanProceed(0))
        return 1;
    ReturnNumber(context, OnGetNumRows());
    return 1;
}

int CVeskDataSetBase::GetNumCols(CVeskCommandContext* context)
{
    if (!context->CanProceed(0))
        return 1;
    ReturnNumber(context, OnGetNumCols());
    return 1;
}

int CVeskDataSetBase::GetColName(CVeskCommandContext* context)
{
    double dColId = 0;
    context->GetParam("colId", &dColId, 0);
    if (!context->CanProceed(0))
        return 1;
    context->SetReturnValueNoRef(CVeskGdString::Allocate(OnGetColName(TruncateToInt(dColId) - 1)));
    return 1;
}

// The element walk -------------------------------------------------------------------------------

CVeskGenericData* CVeskDataSetBase::FirstElement()
{
    if (!m_RowElements.empty())
        ForgetElements(nullptr);
    OnReset();
    // The first row is not in the map: the loop moves past it before it looks.
    while (OnNext()) {
        CVeskGenericData*& element = m_RowElements[OnGetRowId()];
        if (element) // a subclass that repeats a row id: the newer element wins
            element->Release();
        element = CVeskGdDouble::Allocate(OnGetRowId());
    }
    OnReset();
    return CVeskGdDouble::Allocate(OnGetRowId());
}

CVeskGenericData* CVeskDataSetBase::NextElement(CVeskGenericData* pElement)
{
    if (!IsNumber(pElement))
        return nullptr;
    int nRowId = ElementRowId(pElement);
    if (nRowId != OnGetRowId() && !OnSetRow(nRowId))
        return nullptr;
    if (!OnNext())
        return nullptr;
    int nNext = OnGetRowId();
    static_cast<CVeskGdDouble*>(pElement)->m_dValue = nNext;
    std::map<int, CVeskGenericData*>::iterator found = m_RowElements.find(nNext);
    if (found == m_RowElements.end())
        return nullptr;
    // The map's reference goes to the caller, so the map lets go of the element: whatever
    // stays in the map was never handed out and is the set's to release.
    CVeskGenericData* element = found->second;
    m_RowElements.erase(found);
    return element;
}

void CVeskDataSetBase::ForgetElements(CVeskGenericData* pElement)
{
    if (pElement)
        pElement->Release();
    for (std::map<int, CVeskGenericData*>::value_type& entry : m_RowElements)
        entry.second->Release();
    m_RowElements.clear();
}

CDorlString CVeskDataSetBase::ElementText(CVeskGenericData* pElement, const CDorlString& colName,
                                          int bSortKey, int* pbOK)
{
    *pbOK = 0;
    if (!pElement) {
        DorlDump("Invalid element\n");
        return CDorlString();
    }
    if (pElement->GetType() != CVeskGenericData::dtNumber) {
        DorlDump("Invalid type\n");
        return CDorlString();
    }
    int nRowId = ElementRowId(pElement);
    if (nRowId != OnGetRowId() && !OnSetRow(nRowId)) {
        DorlDump("OnSetRow %d error\n", nRowId);
        return CDorlString();
    }
    int nColumn = OnGetColIndex(colName);
    if (nColumn < 0) {
        if (colName.CompareNoCase("Type") == 0 || colName.CompareNoCase("Icon") == 0) {
            *pbOK = 1;
            return m_sType;
        }
        DorlDump(kInvalidColumnName, static_cast<const char*>(colName));
        return CDorlString();
    }
    void* pCell = OnGetValue(nColumn);
    if (!pCell) {
        DorlDump("OnGetValue error for %s\n", static_cast<const char*>(colName));
        return CDorlString();
    }
    CDorlString text = CellText(GetColumnType(nColumn), pCell, bSortKey);
    *pbOK = 1;
    return text;
}

CVeskGenericData* CVeskDataSetBase::XTreeObj::GetFirstElement() { return Owner()->FirstElement(); }

CVeskGenericData* CVeskDataSetBase::XTreeObj::GetNextElement(CVeskGenericData* pElement)
{
    return Owner()->NextElement(pElement);
}

void CVeskDataSetBase::XTreeObj::ReleaseElements(CVeskGenericData* pElement)
{
    Owner()->ForgetElements(pElement);
}

void CVeskDataSetBase::XTreeObj::ReleaseElement(CVeskGenericData* pElement)
{
    if (pElement)
        pElement->Release();
}

CVeskGenericData* CVeskDataSetBase::XTreeObj::GetFirstChild(CVeskGenericData*) { return nullptr; }

int CVeskDataSetBase::XTreeObj::HasChildren(CVeskGenericData*) { return 0; }

CDorlString CVeskDataSetBase::XTreeObj::GetElementText(CVeskGenericData* pElement,
                                                       const CDorlString& colName, int bSortKey,
                                                       int* pbOK)
{
    int bOK = 0; // a caller that does not care may pass null
    CDorlString text = Owner()->ElementText(pElement, colName, bSortKey, &bOK);
    if (pbOK)
        *pbOK = bOK;
    return text;
}

int CVeskDataSetBase::XTreeObj::CompareElements(CVeskGenericData*, CVeskGenericData*,
                                                const CDorlString&)
{
    return -2;
}

void CVeskDataSetBase::XTreeObj::ExpandElement(CVeskGenericData*) {}

int CVeskDataSetBase::XTreeObj::IsExpanded(CVeskGenericData*) { return 0; }

void CVeskDataSetBase::XTreeObj::CollapseElement(CVeskGenericData*) {}

// Serialising ----------------------------------------------------------------------------------

void CVeskDataSetBase::SerialiseCell(CVeskGdSerialiser* pSerialiser, int nType, void* pCell)
{
    switch (nType) {
    case ctNull:
        pSerialiser->WriteNull(true);
        break;
    case ctInteger:
        pSerialiser->WriteDouble(*static_cast<int*>(pCell), true);
        break;
    case ctString:
        pSerialiser->WriteString(static_cast<const char*>(pCell), true);
        break;
    case ctDouble:
    case ctTime:
    case ctTimeSpan:
    case ctReadableTime:
    case ctJustTime:
        pSerialiser->WriteDouble(*static_cast<double*>(pCell), true);
        break;
    case ctBoolean:
        pSerialiser->WriteBoolean(*static_cast<int*>(pCell), true);
        break;
    default:
        DorlDump(kUnknownColumnType, nType);
        break;
    }
}

// The stream carries the subclass's own column types: an override of "SetColType" changes how
// a number is shown, not what it is.
int CVeskDataSetBase::OnSerialise(CVeskGdSerialiser* pSerialiser)
{
    int nRows = OnGetNumRows();
    int nCols = OnGetNumCols();
    int nRowId = OnGetRowId();
    pSerialiser->WriteDouble(2.0, true);
    pSerialiser->WriteDouble(nRows, true);
    pSerialiser->WriteDouble(nCols, true);
    for (int nColumn = 0; nColumn < nCols; ++nColumn)
        pSerialiser->WriteString(OnGetColName(nColumn), true);
    for (int nRow = 0; nRow < nRows; ++nRow) {
        OnSetRow(nRow);
        for (int nColumn = 0; nColumn < nCols; ++nColumn) {
            void* pCell = OnGetValue(nColumn);
            if (pCell)
                SerialiseCell(pSerialiser, OnGetColType(nColumn), pCell);
        }
    }
    if (nRows > 0)
        OnSetRow(nRowId);
    return 1;
}

// CVeskDataSet -----------------------------------------------------------------------------------

CVeskDataSet::CVeskDataSet() = default;

CVeskDataSet::~CVeskDataSet() = default;

CVeskGenericData* CVeskDataSet::GetProperty(const CDorlString& name, int bByRef)
{
    if (bByRef)
        return nullptr;
    int nColumn = OnGetColIndex(name);
    if (nColumn >= 0)
        return GetColumnValue(nColumn);
    return CVeskDataSetBase::GetProperty(name, 0);
}

CVeskPropertyEnum* CVeskDataSet::GetPropertyEnumerator()
{
    return new CVeskDataSetObjPropEnum(CVeskDataSetBase::GetPropertyEnumerator(), this);
}

CVeskDataSetObjPropEnum::CVeskDataSetObjPropEnum(CVeskPropertyEnum* pBaseEnum,
                                                 CVeskDataSet* pDataSet)
    : m_nColumn(-1), m_pBaseEnum(pBaseEnum), m_pDataSet(pDataSet)
{}

CVeskDataSetObjPropEnum::~CVeskDataSetObjPropEnum() = default;

void CVeskDataSetObjPropEnum::Reset()
{
    if (m_pBaseEnum)
        m_pBaseEnum->Reset();
    m_nColumn = -1;
}

int CVeskDataSetObjPropEnum::Next(CDorlString* pName, CDorlString* pDescription, CDorlString* pType,
                                  ReadOnlyStatus* pStatus)
{
    static const char* const typeTexts[] = {"Null", "Integer", "String", "Double", "Boolean"};
    if (m_nColumn < 0 && m_pBaseEnum && m_pBaseEnum->Next(pName, pDescription, pType, pStatus))
        return 1;
    int nCols = m_pDataSet->OnGetNumCols();
    if (m_nColumn >= nCols)
        return 0;
    if (++m_nColumn >= nCols)
        return 0;
    int nType = m_pDataSet->GetColumnType(m_nColumn);
    *pName = m_pDataSet->OnGetColName(m_nColumn);
    *pDescription = "Column Data";
    *pStatus = ReadOnly;
    if (nType >= CVeskDataSetBase::ctNull && nType <= CVeskDataSetBase::ctBoolean)
        *pType = typeTexts[nType];
    else {
        // The time types hold their numbers as doubles.
        if (nType < 0 || nType > CVeskDataSetBase::ctJustTime)
            DorlDump(kUnknownColumnType, nType);
        *pType = "Double";
    }
    return 1;
}

int CVeskDataSetObjPropEnum::GetCurrentValue(CVeskGenericData**) { return 0; }

void CVeskDataSetObjPropEnum::Delete()
{
    if (m_pBaseEnum)
        m_pBaseEnum->Delete();
    delete this;
}
