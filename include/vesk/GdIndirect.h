#pragma once

// A value that refers to a storage slot: its own, or one in another object. Reading it yields
// the value at the end of a chain of indirects; writing it replaces (or assigns) what the slot
// holds; asking it for properties and calling it go to the value in the slot.
//
// All indirects share one process-wide lock, which a thread may enter again. It guards the slot
// pointers, not the values: a forwarded call holds a reference on the value and runs outside it.

#include "vesk/GenericData.h"

class VESK_API CVeskGdIndirect : public CVeskGenericData {
public:
    enum {
        flagReadOnly = 1, // SetValue does nothing
        flagAssign = 2    // SetValue assigns to the present value instead of replacing it
    };

    CVeskGdIndirect();
    ~CVeskGdIndirect() override;

    static CVeskGdIndirect* Allocate();

    // With bAddRef the caller gets a reference; without, it must not keep the pointer.
    CVeskGenericData* GetValue(int bAddRef);
    CVeskGenericData** GetValuePtr();
    // A null value stores None.
    void SetValue(CVeskGenericData* value);
    // Refers to a slot outside the object, which must outlive this indirect; null goes back
    // to the own slot, filled with None.
    void SetValuePtr(CVeskGenericData** slot);
    int GetFlags() const;
    void SetFlags(int flags);

    // How many entries the indirects' lock holds now: 0 when no thread is inside it.
    static int GetLockDepth();

    CVeskGenericData* STDMETHODCALLTYPE GetProperty(const CDorlString& name, int bByRef) override;
    int STDMETHODCALLTYPE SetProperty(const CDorlString& name, CVeskGenericData* value) override;
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext* context) override;

    DataType GetType() const override;
    void Print(std::ostream& stream) const override;
    void Write(CDorlArchive& archive) const override;
    void Read(CDorlArchive& archive) override;
    // An indirect cannot be copied: asserts and yields null.
    CVeskGenericData* Copy() override;

    CVeskGenericData* m_poValue;
    int32_t m_nFlags;
    CVeskGenericData** m_ppValue;

private:
    // The value in the slot in use, with a reference, taken under the lock.
    CVeskGenericData* TakeSlotValue();
};
