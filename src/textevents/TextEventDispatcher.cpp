#include "vesk/TextEvents.h"

CVeskTextSubjectEvent::CVeskTextSubjectEvent() : m_nEventCode(0), m_nParam1(0), m_nParam2(0) {}

CVeskTextSubjectEvent::CVeskTextSubjectEvent(int32_t code, int32_t param1, int32_t param2)
    : m_nEventCode(code), m_nParam1(param1), m_nParam2(param2)
{}

CVeskTextSubjectEvent::~CVeskTextSubjectEvent() = default;

int32_t CVeskTextSubjectEvent::GetEventCode() const { return m_nEventCode; }

int32_t CVeskTextSubjectEvent::SetEventCode(int32_t code) { return m_nEventCode = code; }

int32_t CVeskTextSubjectEvent::GetParam1() const { return m_nParam1; }

int32_t CVeskTextSubjectEvent::SetParam1(int32_t param) { return m_nParam1 = param; }

int32_t CVeskTextSubjectEvent::GetParam2() const { return m_nParam2; }

void CVeskTextSubjectEvent::SetParam2(int32_t param) { m_nParam2 = param; }

CVeskTextEventDispatcher::CVeskTextEventDispatcher() = default;

CVeskTextEventDispatcher::~CVeskTextEventDispatcher() { m_observers.RemoveAll(); }

bool CVeskTextEventDispatcher::Attach(IVeskTextObserver* pObserver)
{
    if (!pObserver)
        return false;
    if (IsAttached(pObserver))
        return true;
    pObserver->AddRef();
    m_observers.AddTail(pObserver);
    return true;
}

bool CVeskTextEventDispatcher::Detach(IVeskTextObserver* pObserver)
{
    if (!pObserver)
        return false;
    DORLPOSITION position = m_observers.Find(pObserver);
    if (!position)
        return false;
    // The observer hears of it while the dispatcher's reference still keeps it alive.
    CVeskTextSubjectEvent detached(CVeskTextSubjectEvent::Detached, -1, -1);
    pObserver->OnTextEvent(detached);
    pObserver->Release();
    m_observers.RemoveAt(position);
    return true;
}

bool CVeskTextEventDispatcher::IsAttached(IVeskTextObserver* pObserver)
{
    return pObserver && m_observers.Find(pObserver);
}

void CVeskTextEventDispatcher::Notify(const CVeskTextSubjectEvent& event)
{
    // The walk steps on only after the entry is served, so an observer appended meanwhile, even
    // behind the last one, is reached.
    DORLPOSITION position = m_observers.GetHeadPosition();
    while (position) {
        m_observers.GetAt(position)->OnTextEvent(event);
        m_observers.GetNext(position);
    }
}
