#include "dorl/DorlProbe.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace {

struct ProbeRegistry {
    std::mutex mutex;
    std::vector<CDorlProberVariable*> variables;
};

// Never destroyed: probes in other libraries' statics may outlive this library's statics.
ProbeRegistry& Registry()
{
    static ProbeRegistry* registry = new ProbeRegistry;
    return *registry;
}

} // namespace

CDorlProberVariable::CDorlProberVariable(const char* path, const char* name)
    : m_path(path), m_name(name)
{
    ProbeRegistry& registry = Registry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    registry.variables.push_back(this);
}

CDorlProberVariable::~CDorlProberVariable()
{
    ProbeRegistry& registry = Registry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    auto& variables = registry.variables;
    variables.erase(std::remove(variables.begin(), variables.end(), this), variables.end());
}

CDorlProbedLong::CDorlProbedLong(const char* path, const char* name, long initial, void*)
    : CDorlProberVariable(path, name), m_value(initial)
{}

long CDorlProbedLong::GetValue() const { return m_value; }

CDorlProberVariable* DorlFindProbe(const char* path, const char* name)
{
    CDorlString wantedPath(path);
    CDorlString wantedName(name);
    ProbeRegistry& registry = Registry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    auto& variables = registry.variables;
    for (auto at = variables.rbegin(); at != variables.rend(); ++at) {
        if (wantedPath == (*at)->GetPath() && wantedName == (*at)->GetName())
            return *at;
    }
    return nullptr;
}
