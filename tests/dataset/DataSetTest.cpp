#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "Recorders.h"
#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

// Three rows in memory with ids 0 to 2 (none when empty); the set's calls that matter are logged.
class CTable : public CVeskDataSet {
public:
    struct Column {
        const char* name;
        int type;
    };
    struct Row {
        int nId;
        char szName[8];
        double dPrice;
        int bActive;
        double dWhen;
    };

    explicit CTable(int bEmpty = 0) : m_nRows(bEmpty ? 0 : 3) {}

    int OnNext() override { return m_nRow + 1 < m_nRows ? ++m_nRow, 1 : 0; }
    void* OnGetValue(int nColumn) override
    {
        if (m_bNullCells || nColumn < 0 || nColumn > 5 || m_nRow >= m_nRows)
            return nullptr;
        Row& row = m_Rows[m_nRow];
        void* cells[] = {&row.nId, row.szName, &row.dPrice, &row.bActive, &row.dWhen, &m_nOdd};
        return cells[nColumn];
    }
    int OnGetNumCols() override { return 6; }
    CDorlString OnGetColName(int nColumn) override
    {
        m_Log += "name" + std::to_string(nColumn) + ";";
        return nColumn >= 0 && nColumn < 6 ? m_Columns[nColumn].name : "";
    }
    int OnGetColIndex(const CDorlString& name) override
    {
        for (int i = 0; i < 6; ++i)
            if (name == m_Columns[i].name)
                return i;
        return -1;
    }
    int OnGetColType(int nColumn) override { return m_Columns[nColumn].type; }
    int OnSort(const CDorlString& colName, int nOrder) override
    {
        m_Log += "sort " + std::string(colName) + " " + std::to_string(nOrder) + ";";
        return 1;
    }
    int OnReset() override { return m_nRow = 0, 1; }
    int OnGetRowId() override { return m_nRow; }
    int OnSetRow(int nRowId) override
    {
        m_Log += "row " + std::to_string(nRowId) + ";";
        return nRowId >= 0 && nRowId < m_nRows ? m_nRow = nRowId, 1 : 0;
    }
    int OnGetNumRows() override { return m_nRows; }

    Column m_Columns[6] = {{"id", ctInteger},     {"name", ctString}, {"price", ctDouble},
                           {"active", ctBoolean}, {"when", ctDouble}, {"odd", 42}};
    Row m_Rows[3] = {
        {42, "tea", 1.5, 1, 86400.0}, {7, "cake", 12.25, 0, 90061.0}, {-3, "jam", 0, 1, 0}};
    int m_nRows;
    int m_nRow = 0;
    int m_bNullCells = 0;
    int m_nOdd = 3; // the cell of the column of an unknown type
    std::string m_Log;
};

// Each test has a fresh table, seen through its tree interface too.
class DataSets : public StartedTest {
protected:
    void SetUp() override
    {
        StartedTest::SetUp();
        setenv("TZ", "UTC", 1);
        tzset();
        table->QueryInterface(&IID_IVeskTree, reinterpret_cast<void**>(&tree));
    }
    void TearDown() override { table->Release(); }

    std::string Text(CVeskGenericData* element, const char* column, int bSortKey, int* pbOK)
    {
        return std::string(tree->GetElementText(element, column, bSortKey, pbOK));
    }
    std::string Column(const char* name)
    {
        return Shown(Ref<CVeskGenericData>(table->GetProperty(name, 0)).get());
    }

    CTable* table = new CTable();
    Ref<IVeskTree> tree;
    Ref<CVeskGenericData> row0{CVeskGdDouble::Allocate(0)}, row1{CVeskGdDouble::Allocate(1)},
        row2{CVeskGdDouble::Allocate(2)};
};

} // namespace

TEST_F(DataSets, ScriptFunctionsReachTheCursorAndCells)
{
    Capture capture;
    ContextMessages().clear();
    struct Case {
        const char* function;
        std::vector<Param> params;
        const char* expected;
    } cases[] = {
        {"GetNumRows", {}, "3"},
        {"GetNumCols", {}, "6"},
        {"GetColName", {{"colId", Num(1.9)}}, "\"id\""},
        {"GetValue", {{"ColumnRef", Num(1)}}, "42"},
        {"GetValue", {{"ColumnRef", Str("id")}}, "42"},
        {"GetValue", {{"ColumnRef", Str("active")}}, "True"},
        {"GetValue", {{"ColumnRef", Str("missing")}}, "0"},
        {"GetValue", {{"ColumnRef", Bool(1)}}, "Null"},
        {"SetRow", {{"rowId", Num(2.7)}}, "True"},
        {"GetRowId", {}, "2"},
        {"GetValue", {{"ColumnRef", Num(2)}}, "\"jam\""},
        {"Next", {}, "False"},
        {"SetRow", {{"rowId", Num(5)}}, "False"},
        {"Reset", {}, "True"},
        {"Next", {}, "True"},
        {"Sort", {{"colName", Str("price")}}, "True"},
        {"SetType", {{"colType", Str("Folder")}}, "True"},
        {"GetValue", {}, "None"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Call(table, c.function, c.params), c.expected) << c.function;

    EXPECT_EQ(capture.AllDumps(), "Invalid column name missing\n"
                                  "CVeskDataSetBase::GetValue Invalid Parameter Provided");
    EXPECT_EQ(ContextMessages(), "Parameter 'ColumnRef' missing for function GetValue|");
    EXPECT_EQ(table->m_Log, "name0;row 2;row 5;sort price 1;");
    EXPECT_EQ(std::string(table->m_sType), "Folder");
}

TEST_F(DataSets, ColumnsReadAsPropertiesAndHideFunctions)
{
    table->m_Columns[4].name = "Next";
    EXPECT_EQ(Column("price"), "1.5");
    EXPECT_EQ(Column("Next"), "86400");
    EXPECT_EQ(table->GetProperty("price", 1), nullptr);
    EXPECT_EQ(Column("name"), "\"tea\"");
    // Not a column: the functions, then the component.
    EXPECT_EQ(Ref<CVeskGenericData>(table->GetProperty("Reset", 0))->GetType(),
              CVeskGenericData::dtObject);
    EXPECT_EQ(Column("*name"), "\"Vesk\"");

    // The enumerator lists the functions and the component's properties first, then columns.
    Capture capture;
    CVeskPropertyEnum* properties = table->GetPropertyEnumerator();
    std::vector<std::string> listed = Described(properties);
    ASSERT_EQ(listed.size(), 11u + 6u + 6u);
    EXPECT_EQ(listed[0], "GetColName|&CVeskDataSetBase::GetColName|Function|0");
    EXPECT_EQ(listed[11], "*derived|&CVeskComponent::AsteriskDerived|IUnknown|2");
    std::vector<std::string> columns(listed.end() - 6, listed.end());
    EXPECT_EQ(columns, (std::vector<std::string>{
                           "id|Column Data|Integer|0", "name|Column Data|String|0",
                           "price|Column Data|Double|0", "active|Column Data|Boolean|0",
                           "Next|Column Data|Double|0", "odd|Column Data|Double|0"}));
    EXPECT_EQ(capture.AllDumps(), "Unknown column type 42\n");
    CDorlString name, description, type;
    CVeskPropertyEnum::ReadOnlyStatus status;
    EXPECT_EQ(properties->Next(&name, &description, &type, &status), 0);
    properties->Reset();
    EXPECT_EQ(Described(properties).size(), listed.size());
    properties->Delete();
}

TEST_F(DataSets, SetColTypeChangesTextNotValues)
{
    ASSERT_TRUE(tree.get());
    int bOK = 0;
    EXPECT_EQ(Text(row1.get(), "when", 0, &bOK), "90061.000000");

    Capture capture;
    EXPECT_EQ(Call(table, "SetColType", {{"colName", Str("when")}, {"colType", Str("time")}}),
              "True");
    table->SetTimeFormat("%Y-%m-%d %H:%M:%S");
    EXPECT_EQ(Text(row1.get(), "when", 0, &bOK), "1970-01-02 01:01:01");
    EXPECT_EQ(Text(row1.get(), "when", 1, &bOK), "090061.000");
    EXPECT_EQ(Column("when"), "90061");
    EXPECT_EQ(Call(table, "SetColType", {{"colName", Str("when")}, {"colType", Str("TIMESPAN")}}),
              "True");
    EXPECT_EQ(Text(row1.get(), "when", 0, &bOK), "01:01:01");
    EXPECT_EQ(Call(table, "SetColType", {{"colName", Str("when")}, {"colType", Str("JustTime")}}),
              "True");
    EXPECT_EQ(Text(row0.get(), "when", 0, &bOK), "00:00:00 AM");

    // Only the time types, only known columns; a refusal changes nothing.
    EXPECT_EQ(Call(table, "SetColType", {{"colName", Str("price")}, {"colType", Str("Money")}}),
              "False");
    EXPECT_EQ(Call(table, "SetColType", {{"colName", Str("nope")}, {"colType", Str("Time")}}),
              "False");
    EXPECT_EQ(Text(row0.get(), "price", 0, &bOK), "1.500000");
    EXPECT_EQ(capture.AllDumps(), "Invalid column type Money\nInvalid column name nope\n");
    EXPECT_EQ(table->m_ColTypes.size(), 1u);

    // The stream keeps the subclass's own type: the number, not a date.
    CRecordingSerialiser serialiser;
    EXPECT_EQ(table->OnSerialise(&serialiser), 1);
    EXPECT_NE(serialiser.m_Log.find("D90061 "), std::string::npos) << serialiser.m_Log;
}

TEST_F(DataSets, ElementTextsAndSortKeysWithTheirComplaints)
{
    table->m_sType = "Folder";
    Ref<CVeskGenericData> row9(CVeskGdDouble::Allocate(9));
    Ref<CVeskGenericData> text(CVeskGdString::Allocate("0"));
    Capture capture;
    struct Case {
        CVeskGenericData* element;
        const char* column;
        int bSortKey;
        const char* expected;
        int bOK;
    } cases[] = {
        {row0.get(), "id", 0, "42", 1},         {row0.get(), "id", 1, "0000000042", 1},
        {row2.get(), "id", 1, "-000000003", 1}, {row0.get(), "price", 1, "000001.500", 1},
        {row0.get(), "name", 1, "tea", 1},      {row0.get(), "active", 0, "true", 1},
        {row2.get(), "active", 1, "true", 1},   {row0.get(), "tYpE", 0, "Folder", 1},
        {row0.get(), "ICON", 1, "Folder", 1},   {row0.get(), "odd", 0, "", 1},
        {row0.get(), "colour", 0, "", 0},       {nullptr, "id", 0, "", 0},
        {text.get(), "id", 0, "", 0},           {row9.get(), "id", 0, "", 0},
    };
    for (const Case& c : cases) {
        int bOK = -1;
        EXPECT_EQ(Text(c.element, c.column, c.bSortKey, &bOK), c.expected) << c.column;
        EXPECT_EQ(bOK, c.bOK) << c.column;
    }
    EXPECT_EQ(capture.AllDumps(), "Unknown column type 42\nInvalid column name colour\n"
                                  "Invalid element\nInvalid type\nOnSetRow 9 error\n");

    // A cell the subclass cannot give reads as 0 but has no text.
    capture.Clear();
    table->m_bNullCells = 1;
    EXPECT_EQ(Column("id"), "0");
    EXPECT_EQ(Column("name"), "\"\"");
    int bOK = -1;
    EXPECT_EQ(Text(row0.get(), "id", 0, &bOK), "");
    EXPECT_EQ(bOK, 0);
    EXPECT_EQ(capture.AllDumps(), "OnGetValue error for id\n");
}

TEST_F(DataSets, TheWalkHandsOutEachRowOnce)
{
    for (int pass = 0; pass < 2; ++pass) {
        CVeskGenericData* first = tree->GetFirstElement();
        EXPECT_EQ(table->m_RowElements.size(), 2u);
        std::string walked = Printed(first);
        while (CVeskGenericData* next = tree->GetNextElement(first)) {
            walked += " " + Printed(next) + "=" + Printed(first);
            tree->ReleaseElement(next);
        }
        EXPECT_EQ(walked, "0 1=1 2=2");
        tree->ReleaseElements(first);
        EXPECT_TRUE(table->m_RowElements.empty());
    }
    // A walk given up early: what was never handed out goes with the set.
    CVeskGenericData* first = tree->GetFirstElement();
    tree->ReleaseElement(first);
    EXPECT_EQ(tree->GetNextElement(nullptr), nullptr);
    EXPECT_EQ(tree->GetFirstChild(nullptr), nullptr);
    EXPECT_EQ(tree->CompareElements(nullptr, nullptr, "id"), -2);
}

TEST_F(DataSets, SerialisingWritesEveryRowAndPutsTheCursorBack)
{
    table->OnSetRow(1);
    table->m_Log.clear();
    CRecordingSerialiser serialiser;
    Capture capture;
    EXPECT_EQ(table->OnSerialise(&serialiser), 1);
    EXPECT_EQ(serialiser.m_Log, "D2 D3 D6 Sid Sname Sprice Sactive Swhen Sodd "
                                "D42 Stea D1.5 B1 D86400 D7 Scake D12.25 B0 D90061 "
                                "D-3 Sjam D0 B1 D0 ");
    EXPECT_EQ(capture.AllDumps(), "Unknown column type 42\nUnknown column type 42\n"
                                  "Unknown column type 42\n");
    EXPECT_EQ(table->m_Log, "name0;name1;name2;name3;name4;name5;row 0;row 1;row 2;row 1;");

    CTable* empty = new CTable(1);
    CRecordingSerialiser nothing;
    EXPECT_EQ(empty->OnSerialise(&nothing), 1);
    EXPECT_EQ(nothing.m_Log, "D2 D0 D6 Sid Sname Sprice Sactive Swhen Sodd ");
    EXPECT_EQ(empty->m_Log.find("row"), std::string::npos);
    empty->Release();
}
