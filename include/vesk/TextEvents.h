#pragma once

// Observers of text subjects. A subject (an application's object) keeps its observers in a
// CVeskTextEventDispatcher, as a member or a base, and forwards Attach, Detach and IsAttached
// of its interface to it.

#include <cstdint>

#include <dorl/DorlList.h>
#include <standin/Unknown.h>

#include "vesk/InterfaceIds.h"
#include "vesk/VeskExport.h"

// What happened to a subject. The codes and parameters are the subjects' own but one.
class VESK_API CVeskTextSubjectEvent {
public:
    // The observer has been detached; both parameters are -1.
    enum { Detached = 2 };

    CVeskTextSubjectEvent();
    CVeskTextSubjectEvent(int32_t code, int32_t param1, int32_t param2);
    virtual ~CVeskTextSubjectEvent();

    virtual int32_t GetEventCode() const;
    virtual int32_t SetEventCode(int32_t code);
    virtual int32_t GetParam1() const;
    virtual int32_t SetParam1(int32_t param);
    virtual int32_t GetParam2() const;
    virtual void SetParam2(int32_t param);

    int32_t m_nEventCode;
    int32_t m_nParam1;
    int32_t m_nParam2;
};

struct IVeskTextObserver : public IUnknown {
    // The result is not looked at.
    virtual HRESULT STDMETHODCALLTYPE OnTextEvent(const CVeskTextSubjectEvent& event) = 0;

protected:
    ~IVeskTextObserver() = default;
};

// Not counted, and used by one thread at a time. Each observer stands in the list at most once,
// with one reference, in order of attachment.
class VESK_API CVeskTextEventDispatcher {
public:
    CVeskTextEventDispatcher();
    // Forgets the observers without telling or releasing them: the subject detaches them first.
    virtual ~CVeskTextEventDispatcher();
    CVeskTextEventDispatcher(const CVeskTextEventDispatcher&) = delete;
    CVeskTextEventDispatcher& operator=(const CVeskTextEventDispatcher&) = delete;

    // False for null; true, and nothing more, for an observer already attached.
    virtual bool Attach(IVeskTextObserver* pObserver);
    // Tells the observer alone that it is detached, then gives up its reference. False for null
    // and for a stranger, who hears nothing.
    virtual bool Detach(IVeskTextObserver* pObserver);
    virtual bool IsAttached(IVeskTextObserver* pObserver);
    // Every observer in order of attachment, those attached by an observer on the way included.
    // No observer may be detached meanwhile.
    virtual void Notify(const CVeskTextSubjectEvent& event);

protected:
    CDorlList<IVeskTextObserver*> m_observers;
};
