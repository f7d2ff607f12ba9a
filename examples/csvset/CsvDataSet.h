#pragma once

// A data set over a CSV file: what an application writes to show its own table through the
// framework. The first line names the columns and gives each a type after a colon,
//
//     id:integer,item:string,price:double,paid:boolean,ordered:double
//
// and every further line is one row. Fields may be quoted ("a, b"), with "" for a quote inside.
// Rows are numbered 0 to n - 1 in their present order, so the set can be serialised.

#include <string>
#include <vector>

#include <vesk/vesk.h>

class CCsvDataSet : public CVeskDataSet {
public:
    // Reads the file; null, after a message for each complaint, when it cannot be used. Lines
    // that do not fit are reported and left out. The set comes with one reference.
    static CCsvDataSet* Load(const char* path);

    int OnNext() override;
    void* OnGetValue(int nColumn) override;
    int OnGetNumCols() override;
    CDorlString OnGetColName(int nColumn) override;
    int OnGetColIndex(const CDorlString& name) override;
    int OnGetColType(int nColumn) override;
    // Orders the rows by the column: ascending for nOrder 1 and above, descending below. Equal
    // rows keep their order.
    int OnSort(const CDorlString& colName, int nOrder) override;
    int OnReset() override;
    int OnGetRowId() override;
    int OnSetRow(int nRowId) override;
    int OnGetNumRows() override;
    CDorlString OnGetCreationName() override { return "CsvDataSet"; }

private:
    // One field as every type needs it: the raw cells point into these.
    struct Cell {
        int nInt = 0; // Integer and Boolean
        double dValue = 0;
        std::string sText;
    };
    struct Column {
        std::string sName;
        int nType;
    };

    bool ReadHeader(const std::vector<std::string>& fields, const char* path);
    bool ReadRow(const std::vector<std::string>& fields, const char* path, int nLine);

    std::vector<Column> m_Columns;
    std::vector<std::vector<Cell>> m_Rows;
    int m_nRow = 0;
};
