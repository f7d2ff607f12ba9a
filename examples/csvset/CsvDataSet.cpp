// The CSV file behind the data set: parsing, typed cells and the cursor.

#include "CsvDataSet.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>

namespace {

// Splits one line at commas outside quotes. False for a quote that is never closed.
bool SplitFields(const std::string& line, std::vector<std::string>& fields)
{
    fields.assign(1, std::string());
    bool bQuoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        char ch = line[i];
        if (bQuoted && ch == '"' && i + 1 < line.size() && line[i + 1] == '"') {
            fields.back() += '"';
            ++i;
        } else if (ch == '"')
            bQuoted = !bQuoted;
        else if (ch == ',' && !bQuoted)
            fields.emplace_back();
        else if (ch != '\r')
            fields.back() += ch;
    }
    return !bQuoted;
}

int TypeOfName(const std::string& name)
{
    static const char* const names[] = {"null", "integer", "string", "double", "boolean"};
    for (int i = 0; i < 5; ++i)
        if (name == names[i])
            return i;
    return -1;
}

} // namespace

CCsvDataSet* CCsvDataSet::Load(const char* path)
{
    std::ifstream file(path);
    if (!file) {
        DorlDump("%s: cannot be read\n", path);
        return nullptr;
    }
    CCsvDataSet* set = new CCsvDataSet();
    std::string line;
    std::vector<std::string> fields;
    int nLine = 0;
    while (std::getline(file, line)) {
        ++nLine;
        if (!SplitFields(line, fields)) {
            DorlDump("%s:%d: a quote is not closed; line left out\n", path, nLine);
            continue;
        }
        bool bUsable =
            nLine == 1 ? set->ReadHeader(fields, path) : set->ReadRow(fields, path, nLine);
        if (nLine == 1 && !bUsable) {
            set->Release();
            return nullptr;
        }
    }
    if (nLine == 0) {
        DorlDump("%s: empty, no columns\n", path);
        set->Release();
        return nullptr;
    }
    return set;
}

bool CCsvDataSet::ReadHeader(const std::vector<std::string>& fields, const char* path)
{
    for (const std::string& field : fields) {
        size_t colon = field.rfind(':');
        int nType = colon == std::string::npos ? -1 : TypeOfName(field.substr(colon + 1));
        if (nType < 0 || colon == 0) {
            DorlDump("%s:1: column '%s' needs name:type, type one of null, integer, string, "
                     "double, boolean\n",
                     path, field.c_str());
            return false;
        }
        m_Columns.push_back({field.substr(0, colon), nType});
    }
    return true;
}

bool CCsvDataSet::ReadRow(const std::vector<std::string>& fields, const char* path, int nLine)
{
    if (fields.size() == 1 && fields[0].empty())
        return true; // a blank line
    if (fields.size() != m_Columns.size()) {
        DorlDump("%s:%d: %d fields where there are %d columns; line left out\n", path, nLine,
                 static_cast<int>(fields.size()), static_cast<int>(m_Columns.size()));
        return false;
    }
    std::vector<Cell> row(fields.size());
    for (size_t i = 0; i < fields.size(); ++i) {
        const std::string& text = fields[i];
        Cell& cell = row[i];
        cell.sText = text;
        char* end = nullptr;
        errno = 0;
        bool bGood = true;
        switch (m_Columns[i].nType) {
        case ctInteger: {
            long value = std::strtol(text.c_str(), &end, 10);
            bGood = !text.empty() && *end == 0 && errno == 0 && value >= -2147483647L - 1 &&
                    value <= 2147483647L;
            cell.nInt = bGood ? static_cast<int>(value) : 0;
            break;
        }
        case ctDouble:
            cell.dValue = std::strtod(text.c_str(), &end);
            bGood = !text.empty() && *end == 0;
            if (!bGood)
                cell.dValue = 0;
            break;
        case ctBoolean:
            bGood = text == "true" || text == "false";
            cell.nInt = text == "true";
            break;
        default:
            break;
        }
        if (!bGood)
            DorlDump("%s:%d: '%s' is not a %s for column %s; taken as 0\n", path, nLine,
                     text.c_str(),
                     m_Columns[i].nType == ctInteger  ? "whole number"
                     : m_Columns[i].nType == ctDouble ? "number"
                                                      : "true or false",
                     m_Columns[i].sName.c_str());
    }
    m_Rows.push_back(std::move(row));
    return true;
}

// The cursor ------------------------------------------------------------------------------------

int CCsvDataSet::OnNext()
{
    if (m_nRow + 1 >= static_cast<int>(m_Rows.size()))
        return 0;
    ++m_nRow;
    return 1;
}

int CCsvDataSet::OnReset()
{
    m_nRow = 0;
    return 1;
}

int CCsvDataSet::OnGetRowId() { return m_nRow; }

int CCsvDataSet::OnSetRow(int nRowId)
{
    if (nRowId < 0 || nRowId >= static_cast<int>(m_Rows.size()))
        return 0;
    m_nRow = nRowId;
    return 1;
}

int CCsvDataSet::OnGetNumRows() { return static_cast<int>(m_Rows.size()); }

// Columns and cells -----------------------------------------------------------------------------

int CCsvDataSet::OnGetNumCols() { return static_cast<int>(m_Columns.size()); }

CDorlString CCsvDataSet::OnGetColName(int nColumn)
{
    if (nColumn < 0 || nColumn >= OnGetNumCols())
        return CDorlString();
    return m_Columns[nColumn].sName.c_str();
}

int CCsvDataSet::OnGetColIndex(const CDorlString& name)
{
    for (size_t i = 0; i < m_Columns.size(); ++i)
        if (m_Columns[i].sName == static_cast<const char*>(name))
            return static_cast<int>(i);
    return -1;
}

int CCsvDataSet::OnGetColType(int nColumn)
{
    if (nColumn < 0 || nColumn >= OnGetNumCols())
        return ctNull;
    return m_Columns[nColumn].nType;
}

void* CCsvDataSet::OnGetValue(int nColumn)
{
    if (nColumn < 0 || nColumn >= OnGetNumCols() || m_nRow >= OnGetNumRows())
        return nullptr;
    Cell& cell = m_Rows[m_nRow][nColumn];
    switch (m_Columns[nColumn].nType) {
    case ctInteger:
    case ctBoolean:
        return &cell.nInt;
    case ctDouble:
        return &cell.dValue;
    case ctString:
        return const_cast<char*>(cell.sText.c_str());
    default:
        return nullptr;
    }
}

int CCsvDataSet::OnSort(const CDorlString& colName, int nOrder)
{
    int nColumn = OnGetColIndex(colName);
    if (nColumn < 0)
        return 0;
    int nType = m_Columns[nColumn].nType;
    auto less = [&](const std::vector<Cell>& a, const std::vector<Cell>& b) {
        const Cell& x = a[nColumn];
        const Cell& y = b[nColumn];
        switch (nType) {
        case ctString:
            return x.sText < y.sText;
        case ctDouble:
            return x.dValue < y.dValue;
        default:
            return x.nInt < y.nInt;
        }
    };
    if (nOrder >= 1)
        std::stable_sort(m_Rows.begin(), m_Rows.end(), less);
    else
        std::stable_sort(
            m_Rows.begin(), m_Rows.end(),
            [&](const std::vector<Cell>& a, const std::vector<Cell>& b) { return less(b, a); });
    m_nRow = 0;
    return 1;
}
