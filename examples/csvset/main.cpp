// Shows a CSV file through a data set: a script sets it up and reads it through the set's
// functions, a viewer lists it through the IVeskTree walk as a text table, orders it by sort
// keys, and the set is written to a byte stream.
//
//     vesk_csv_dataset <file.csv> [out.gds]
//
// With out.gds the stream is saved as well, for `vesk gds dump out.gds`.
//
// Messages of the library show after the call that caused them.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <vesk/vesk.h>

#include "CsvDataSet.h"

namespace {

std::string s_sMessages; // what the library said during the call being shown

void RouteDump(const char* text) { s_sMessages += text; }

void FlushMessages()
{
    std::istringstream lines(s_sMessages);
    for (std::string line; std::getline(lines, line);)
        std::cout << "  [message] " << line << "\n";
    s_sMessages.clear();
}

std::string Shown(CVeskGenericData* value)
{
    if (!value)
        return "(nothing)";
    std::ostringstream printed;
    printed << *value;
    std::string text = printed.str();
    return value->GetType() == CVeskGenericData::dtString ? "\"" + text + "\"" : text;
}

// Calls a function of the set by name as a script would, and prints what it returned. params
// are named, each a reference that the call takes over.
void Script(IVeskCommand* set, const char* function,
            std::vector<std::pair<const char*, CVeskGenericData*>> params = {})
{
    CVeskCommandContext context;
    context.SetCalledFunctionName(function);
    std::cout << function << "(";
    const char* separator = "";
    for (const auto& param : params) {
        std::cout << separator << param.first << "=" << Shown(param.second);
        separator = ", ";
        context.AddParamNoRef(param.first, param.second);
    }
    std::cout << ")";
    CVeskGenericData* method = set->GetProperty(function, 0);
    method->CallMethod(&context);
    method->Release();
    CVeskGenericData* result = context.GetReturnValue();
    std::cout << " = " << Shown(result) << "\n";
    if (result)
        result->Release();
    FlushMessages();
}

CVeskGenericData* Str(const char* text) { return CVeskGdString::Allocate(text); }
CVeskGenericData* Num(double value) { return CVeskGdDouble::Allocate(value); }

// A viewer's listing: every row of the walk, the columns it asks for, as text or sort keys.
std::vector<std::vector<std::string>> Walk(IVeskTree* tree, const std::vector<std::string>& columns,
                                           int bSortKey)
{
    std::vector<std::vector<std::string>> rows;
    CVeskGenericData* cursor = tree->GetFirstElement();
    CVeskGenericData* element = cursor;
    while (element) {
        std::vector<std::string> cells;
        for (const std::string& column : columns) {
            int bOK = 0;
            CDorlString text = tree->GetElementText(element, column.c_str(), bSortKey, &bOK);
            cells.push_back(bOK ? std::string(text) : "?");
        }
        rows.push_back(cells);
        if (element != cursor)
            tree->ReleaseElement(element);
        element = tree->GetNextElement(cursor);
    }
    tree->ReleaseElements(cursor);
    return rows;
}

void PrintTable(const std::vector<std::string>& header,
                const std::vector<std::vector<std::string>>& rows)
{
    std::vector<size_t> widths;
    for (const std::string& name : header)
        widths.push_back(name.size());
    for (const auto& row : rows)
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    auto print = [&](const std::vector<std::string>& cells) {
        std::cout << " ";
        for (size_t i = 0; i + 1 < cells.size(); ++i)
            std::cout << " " << std::left << std::setw(static_cast<int>(widths[i])) << cells[i];
        std::cout << " " << cells.back() << "\n";
    };
    print(header);
    for (const auto& row : rows)
        print(row);
}

std::string Number(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

// One value of the stream in the shape a data set writes it: a type byte, then the value.
std::string ReadCell(CVeskGdSerialiser& reader)
{
    SerialiseType type = reader.ReadType();
    double dValue = 0;
    CDorlString text;
    switch (type) {
    case SerialiseDouble:
        return reader.ReadDouble(dValue, 0) ? Number(dValue) : "?";
    case SerialiseString:
        return reader.ReadString(text, 0) ? "\"" + std::string(text) + "\"" : "?";
    case SerialiseTrue:
        return "true";
    case SerialiseFalse:
        return "false";
    case SerialiseNull:
        return "null";
    default:
        return "?";
    }
}

// The object's name, then version, rows, columns, the column names and the cells row by row.
void ReadBack(CVeskGdMemorySerialiserIO& stream)
{
    stream.Rewind();
    CVeskGdSerialiserImpl reader(&stream);
    CDorlString name;
    double dVersion = 0, dRows = 0, dCols = 0;
    if (reader.ReadType() != SerialiseObject || !reader.ReadString(name, 0) ||
        !reader.ReadDouble(dVersion, 1) || !reader.ReadDouble(dRows, 1) ||
        !reader.ReadDouble(dCols, 1)) {
        std::cout << "not a data set\n";
        return;
    }
    std::cout << "object \"" << name << "\", layout " << dVersion << ", " << dRows << " rows of "
              << dCols << " columns\n";
    int nCols = static_cast<int>(dCols);
    std::cout << " ";
    for (int i = 0; i < nCols; ++i)
        std::cout << " " << ReadCell(reader);
    std::cout << "\n";
    for (int nRow = 0; nRow < static_cast<int>(dRows); ++nRow) {
        std::cout << " ";
        for (int i = 0; i < nCols; ++i)
            std::cout << " " << ReadCell(reader);
        std::cout << "\n";
    }
    std::cout << (reader.ReadType() == SerialiseObjectTrailer ? "end of object\n"
                                                              : "no end of object\n");
}

int Save(CVeskGdMemorySerialiserIO& stream, const char* path)
{
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(stream.GetData()),
               static_cast<std::streamsize>(stream.GetSize()));
    if (file.flush())
        return 1;
    std::cerr << path << ": cannot be written\n";
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2 && argc != 3) {
        std::cerr << "usage: vesk_csv_dataset <file.csv> [out.gds]\n";
        return 2;
    }
    DorlRunInitialisers();
    DorlSetDumpHandler(&RouteDump);
    // Times show in UTC, so that the listing reads the same wherever it runs.
    setenv("TZ", "UTC", 1);
    tzset();

    CCsvDataSet* csv = CCsvDataSet::Load(argv[1]);
    FlushMessages();
    if (!csv)
        return 1;
    csv->SetTimeFormat("%Y-%m-%d %H:%M");
    IVeskCommand* set = nullptr;
    csv->QueryInterface(&IID_IVeskCommand, reinterpret_cast<void**>(&set));
    IVeskTree* tree = nullptr;
    csv->QueryInterface(&IID_IVeskTree, reinterpret_cast<void**>(&tree));

    std::cout << "-- the script sets the table up\n";
    Script(set, "GetNumRows");
    Script(set, "GetNumCols");
    Script(set, "GetColName", {{"colId", Num(5)}});
    Script(set, "SetColType", {{"colName", Str("ordered")}, {"colType", Str("Time")}});
    Script(set, "SetColType", {{"colName", Str("prep")}, {"colType", Str("TimeSpan")}});
    Script(set, "SetColType", {{"colName", Str("price")}, {"colType", Str("Money")}});
    Script(set, "SetType", {{"colType", Str("order")}});

    std::cout << "-- the script reads it row by row\n";
    Script(set, "Reset");
    Script(set, "GetValue", {{"ColumnRef", Str("item")}});
    Script(set, "GetValue", {{"ColumnRef", Num(3)}});
    Script(set, "Next");
    Script(set, "GetRowId");
    Script(set, "GetValue", {{"ColumnRef", Str("ordered")}});
    CVeskGenericData* paid = set->GetProperty("paid", 0); // a column as a property
    std::cout << "paid = " << Shown(paid) << "\n";
    paid->Release();
    Script(set, "SetRow", {{"rowId", Num(9)}});

    std::vector<std::string> columns;
    for (int i = 0; i < csv->OnGetNumCols(); ++i)
        columns.push_back(std::string(csv->OnGetColName(i)));
    columns.push_back("Type");

    std::cout << "-- a viewer lists it through the tree walk\n";
    PrintTable(columns, Walk(tree, columns, 0));

    std::cout << "-- and orders it by the sort keys of price, as text\n";
    std::vector<std::string> keyed = {"price", "item", "ordered"};
    std::vector<std::vector<std::string>> keys = Walk(tree, keyed, 1);
    std::stable_sort(keys.begin(), keys.end(),
                     [](const auto& a, const auto& b) { return a[0] < b[0]; });
    PrintTable(keyed, keys);

    std::cout << "-- the script sorts by item, the set orders its rows\n";
    Script(set, "Sort", {{"colName", Str("item")}});
    PrintTable(columns, Walk(tree, columns, 0));

    std::cout << "-- the set is written with the current byte format\n";
    CVeskGdMemorySerialiserIO stream;
    CVeskGdSerialiserImpl writer(&stream);
    CVeskGenericData* value = CVeskGdObject::Allocate(csv);
    int bWritten = writer.WriteGdObject(value);
    value->Release();
    FlushMessages();
    std::cout << (bWritten ? "written: " : "not written: ") << stream.GetSize() << " bytes\n";
    int bSaved = argc < 3 || Save(stream, argv[2]);
    std::cout << "-- and read back by a program that knows only its layout\n";
    ReadBack(stream);

    tree->Release();
    set->Release();
    csv->Release();
    return bWritten && bSaved ? 0 : 1;
}
