#include "dorl/DorlDiag.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace {

struct InitialiserRegistry {
    std::mutex mutex;
    std::vector<void (*)()> initialisers;
    size_t nextToRun = 0;
};

struct ProcessInfoRegistry {
    std::mutex mutex;
    std::map<std::string, void (*)()> handlers;
};

// Other libraries register from their static initialisers, possibly before this library's
// own namespace-scope objects exist, so the registries are built on first use. They are never
// destroyed, for registrations made while the process winds down.
InitialiserRegistry& Initialisers()
{
    static InitialiserRegistry* registry = new InitialiserRegistry;
    return *registry;
}

ProcessInfoRegistry& ProcessInfoHandlers()
{
    static ProcessInfoRegistry* registry = new ProcessInfoRegistry;
    return *registry;
}

void (*TakeNextInitialiser())()
{
    InitialiserRegistry& registry = Initialisers();
    std::lock_guard<std::mutex> lock(registry.mutex);
    if (registry.nextToRun == registry.initialisers.size())
        return nullptr;
    return registry.initialisers[registry.nextToRun++];
}

} // namespace

int DorlAddInitialiser(void (*initialiser)())
{
    InitialiserRegistry& registry = Initialisers();
    std::lock_guard<std::mutex> lock(registry.mutex);
    if (initialiser)
        registry.initialisers.push_back(initialiser);
    // Nonzero even for a null initialiser, which is ignored.
    return static_cast<int>(std::max<size_t>(registry.initialisers.size(), 1));
}

void DorlRunInitialisers()
{
    // Taken one at a time and run unlocked: an initialiser may register or run others.
    while (void (*initialiser)() = TakeNextInitialiser())
        initialiser();
}

void DorlRegisterProcessInfoHandler(const char* name, void (*handler)())
{
    if (!name)
        return;
    ProcessInfoRegistry& registry = ProcessInfoHandlers();
    std::lock_guard<std::mutex> lock(registry.mutex);
    if (handler)
        registry.handlers[name] = handler;
    else
        registry.handlers.erase(name);
}

int DorlRunProcessInfoHandler(const char* name)
{
    if (!name)
        return 0;
    void (*handler)() = nullptr;
    {
        ProcessInfoRegistry& registry = ProcessInfoHandlers();
        std::lock_guard<std::mutex> lock(registry.mutex);
        auto found = registry.handlers.find(name);
        if (found == registry.handlers.end())
            return 0;
        handler = found->second;
    }
    handler();
    return 1;
}
