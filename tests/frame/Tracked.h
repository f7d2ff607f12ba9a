#pragma once

// A bare counted object that notes, when it goes, its id and the thread it went on.

#include <functional>
#include <thread>
#include <vector>

#include <vesk/vesk.h>

namespace vesk_test {

struct Gone {
    int id;
    std::thread::id thread;
    bool operator==(const Gone&) const = default;
};

class Tracked : public IUnknown {
public:
    Tracked(std::vector<Gone>* log, int id) : m_pLog(log), m_nId(id) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppv) override
    {
        *ppv = iid == IID_IUnknown ? this : nullptr;
        if (!*ppv)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_nCount; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        if (--m_nCount > 0)
            return m_nCount;
        m_pLog->push_back({m_nId, std::this_thread::get_id()});
        if (m_onLastRelease)
            m_onLastRelease();
        delete this;
        return 0;
    }
    ULONG Count() const { return m_nCount; }

    // Runs at the last release, before the object goes.
    std::function<void()> m_onLastRelease;

private:
    virtual ~Tracked() = default;

    std::vector<Gone>* m_pLog;
    int m_nId;
    ULONG m_nCount = 1;
};

inline std::vector<int> Ids(const std::vector<Gone>& log)
{
    std::vector<int> ids;
    for (const Gone& release : log)
        ids.push_back(release.id);
    return ids;
}

} // namespace vesk_test
