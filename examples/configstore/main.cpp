// A data store in a configuration file: a script writes settings and a window component into it,
// the program closes the file, shows it, opens it again read-only and the component reads itself
// back.
//
//     vesk_config_datastore <file.cfg>      (the file is replaced)
//
// Messages of the library show after the call that caused them.

#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <vesk/vesk.h>

#include "ConfigDataStore.h"

namespace {

std::string s_sMessages; // what the library said during the call being shown

void RouteDump(const char* text) { s_sMessages += text; }
void RouteError(const char* text) { s_sMessages += std::string(text) + "\n"; }

std::string Shown(CVeskGenericData* value)
{
    if (!value)
        return "None";
    std::ostringstream printed;
    printed << *value;
    return value->GetType() == CVeskGenericData::dtString ? "\"" + printed.str() + "\""
                                                          : printed.str();
}

void FlushMessages()
{
    std::istringstream lines(s_sMessages);
    for (std::string line; std::getline(lines, line);)
        std::cout << "  [message] " << line << "\n";
    s_sMessages.clear();
}

// Calls a function of the store by name as a script would; params are named and taken over.
void Script(IVeskCommand* store, const char* function,
            std::vector<std::pair<const char*, CVeskGenericData*>> params = {})
{
    CVeskCommandContext context;
    context.SetCalledFunctionName(function);
    context.SetErrorHandler(&RouteError);
    std::cout << function << "(";
    const char* separator = "";
    for (const auto& param : params) {
        std::cout << separator << param.first << "=";
        if (param.second->GetType() == CVeskGenericData::dtObject)
            std::cout << "<object>";
        else if (param.second->GetType() == CVeskGenericData::dtIndirect)
            std::cout << "<variable>";
        else
            std::cout << Shown(param.second);
        separator = ", ";
        context.AddParamNoRef(param.first, param.second);
    }
    CVeskGenericData* method = store->GetProperty(function, 0);
    method->CallMethod(&context);
    method->Release();
    CVeskGenericData* result = context.GetReturnValue();
    std::cout << ") = " << Shown(result) << "\n";
    if (result)
        result->Release();
    FlushMessages();
}

CVeskGenericData* Str(const char* text) { return CVeskGdString::Allocate(text); }
CVeskGenericData* Num(double value) { return CVeskGdDouble::Allocate(value); }
CVeskGenericData* Bool(int value) { return CVeskGdBoolean::Allocate(value); }

void Show(IVeskCommand* object, const char* name)
{
    CVeskGenericData* value = object->GetProperty(name, 0);
    std::cout << "  " << name << " = " << Shown(value) << "\n";
    if (value)
        value->Release();
}

// An application's component: a window that keeps its place and title in whatever store it is
// given, under its own section.
class CWindow : public CVeskComponent {
    VESK_DECLARE_PROPERTY_MAP(CWindow)

public:
    CWindow() : CVeskComponent("window") { VESK_FILL_PROPERTY_MAP(); }

    int OnWriteData(const CDorlString& tag, IVeskDataStore* pStore) override
    {
        if (!pStore->Descend(tag, 0))
            return 0;
        int bWritten = pStore->WriteString("title", m_sTitle) &&
                       pStore->WriteInt("left", static_cast<int>(m_dLeft)) &&
                       pStore->WriteInt("top", static_cast<int>(m_dTop)) &&
                       pStore->WriteDouble("zoom", m_dZoom) &&
                       pStore->WriteBool("maximised", m_bMaximised);
        return pStore->Ascend() && bWritten;
    }

    // Whatever the store does not have keeps the value it has now.
    int OnReadData(const CDorlString& tag, IVeskDataStore* pStore) override
    {
        if (!pStore->Descend(tag, 1))
            return 0;
        int nLeft = static_cast<int>(m_dLeft);
        int nTop = static_cast<int>(m_dTop);
        int bRead = pStore->ReadString("title", m_sTitle) && pStore->ReadInt("left", &nLeft) &&
                    pStore->ReadInt("top", &nTop) && pStore->ReadDouble("zoom", &m_dZoom) &&
                    pStore->ReadBool("maximised", &m_bMaximised);
        m_dLeft = nLeft;
        m_dTop = nTop;
        return pStore->Ascend() && bRead;
    }

    CDorlString m_sTitle = "untitled";
    double m_dLeft = 0;
    double m_dTop = 0;
    double m_dZoom = 1;
    int m_bMaximised = 0;
};

VESK_BEGIN_PROPERTY_MAP(CWindow, CVeskComponent)
    VESK_STRING_PROPERTY("title", m_sTitle, VeskReadWrite)
    VESK_DOUBLE_PROPERTY("left", m_dLeft, VeskReadWrite)
    VESK_DOUBLE_PROPERTY("top", m_dTop, VeskReadWrite)
    VESK_DOUBLE_PROPERTY("zoom", m_dZoom, VeskReadWrite)
    VESK_BOOLEAN_PROPERTY("maximised", m_bMaximised, VeskReadWrite)
VESK_END_PROPERTY_MAP()

void ShowWindow(IVeskCommand* window)
{
    for (const char* name : {"title", "left", "top", "zoom", "maximised"})
        Show(window, name);
}

// A command interface with the caller's reference.
IVeskCommand* CommandOf(CVeskCOMObject* object)
{
    IVeskCommand* command = nullptr;
    object->QueryInterface(&IID_IVeskCommand, reinterpret_cast<void**>(&command));
    return command;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: vesk_config_datastore <file.cfg>\n";
        return 2;
    }
    const char* path = argv[1];
    std::remove(path);
    DorlRunInitialisers();
    DorlSetDumpHandler(&RouteDump);
    // The framework leaves this interface unnamed; naming it makes parameter messages readable.
    VeskRegisterInterfaceIdName(IID_IVeskComponent, "IVeskComponent");

    CConfigDataStore* configStore = new CConfigDataStore();
    IVeskCommand* store = CommandOf(configStore);
    configStore->Release(); // the interface holds the store now

    std::cout << "-- a new store\n";
    for (const char* name : {"opened", "level", "accessStatus"})
        Show(store, name);

    std::cout << "-- the script writes settings and a window\n";
    Script(store, "Open", {{"name", Str(path)}});
    Script(store, "Descend", {{"section", Str("display")}});
    Script(store, "WriteNumber", {{"tag", Str("gamma")}, {"value", Num(2.2)}});
    Script(store, "WriteBool", {{"tag", Str("nightMode")}, {"value", Bool(1)}});
    Script(store, "Descend", {{"section", Str("fonts")}});
    Script(store, "WriteString", {{"tag", Str("body")}, {"value", Str("Serif 11")}});
    Show(store, "level");
    Script(store, "Ascend");
    Script(store, "Ascend");
    Script(store, "WriteInteger", {{"tag", Str("launches")}, {"value", Num(3.9)}});
    Script(store, "WriteVector", {{"tag", Str("recent")}, {"value", CVeskGdVector::Allocate(0)}});

    CWindow* window = new CWindow();
    IVeskCommand* windowCommand = CommandOf(window);
    window->Release();
    CVeskGenericData* title = Str("Quarterly report");
    windowCommand->SetProperty("title", title);
    title->Release();
    CVeskGenericData* left = Num(120);
    windowCommand->SetProperty("left", left);
    left->Release();
    CVeskGenericData* zoom = Num(1.25);
    windowCommand->SetProperty("zoom", zoom);
    zoom->Release();
    Script(store, "WriteObject",
           {{"tag", Str("mainWindow")}, {"object", CVeskGdObject::Allocate(windowCommand, 0)}});
    Script(store, "WriteObject", {{"tag", Str("other")}, {"object", Num(1)}});
    Script(store, "Close");
    windowCommand->Release();

    std::cout << "-- the file\n";
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        std::cout << "  | " << line << "\n";

    std::cout << "-- the program opens it again, read-only\n";
    Script(store, "Open", {{"name", Str(path)}, {"readOnly", Bool(1)}});
    Script(store, "EnumSections", {{"index", Num(1)}});
    Script(store, "EnumSections", {{"index", Num(2)}});
    Script(store, "EnumSections", {{"index", Num(3)}});
    Script(store, "EnumEntries", {{"index", Num(1)}});
    CVeskGdIndirect* found = CVeskGdIndirect::Allocate();
    found->AddRef(); // one for the call, one to read afterwards
    Script(store, "ReadInteger",
           {{"tag", Str("launches")}, {"default", Num(0)}, {"bSuccess", found}});
    std::cout << "  bSuccess = " << Shown(found->GetValue(0)) << "\n";
    found->AddRef();
    Script(store, "ReadString",
           {{"tag", Str("owner")}, {"default", Str("nobody")}, {"bSuccess", found}});
    std::cout << "  bSuccess = " << Shown(found->GetValue(0)) << "\n";
    found->Release();
    Script(store, "Descend", {{"section", Str("display")}});
    Script(store, "ReadNumber", {{"tag", Str("gamma")}, {"default", Num(1)}});
    Script(store, "ReadBool", {{"tag", Str("nightMode")}, {"default", Bool(0)}});
    Script(store, "WriteNumber", {{"tag", Str("gamma")}, {"value", Num(1.8)}});
    Show(store, "accessStatus");
    Script(store, "Ascend");

    CWindow* restored = new CWindow();
    IVeskCommand* restoredCommand = CommandOf(restored);
    restored->Release();
    Script(store, "ReadObject",
           {{"tag", Str("mainWindow")}, {"object", CVeskGdObject::Allocate(restoredCommand, 0)}});
    ShowWindow(restoredCommand);
    Script(store, "ReadObject",
           {{"tag", Str("noSuchWindow")}, {"object", CVeskGdObject::Allocate(restoredCommand, 0)}});
    Script(store, "Close");
    for (const char* name : {"opened", "level"})
        Show(store, name);
    restoredCommand->Release();
    store->Release();
    return 0;
}
