// Counts and the locks of indirects and associative arrays under several threads at once. These run
// in every build; the thread sanitizer build is where a race among them is reported.

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "support/VeskTest.h"

using namespace vesk_test;

namespace {

class Concurrency : public StartedTest {};

const IID IID_ITestShared = {0x5e5e0201, 0x0001, 0x0001, {1, 2, 3, 4, 5, 6, 7, 8}};

std::atomic<int> s_finalReleases{0};

class CShared : public CVeskCOMObject {
    VESK_DECLARE_INTERFACE_MAP(CShared)
    VESK_BEGIN_INTERFACE_PART(TestShared, IUnknown)
    VESK_END_INTERFACE_PART(TestShared)
    ~CShared() override { ++s_finalReleases; }
    LONG Count() const { return m_dwRef; }
};

VESK_BEGIN_INTERFACE_MAP(CShared, CVeskCOMObject)
    VESK_INTERFACE(IID_ITestShared, TestShared)
VESK_END_INTERFACE_MAP()

// Counts the calls that reach it through the chain of indirects.
class CCounter : public CVeskSimpleCommandObject {
public:
    int STDMETHODCALLTYPE CallMethod(CVeskCommandContext*) override
    {
        calls.fetch_add(1);
        return 1;
    }
    std::atomic<int> calls{0};
};

template <class Body> void OnThreads(int count, Body body)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < count; ++t)
        threads.emplace_back(body, t);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

TEST_F(Concurrency, SharedObjectsKeepExactCounts)
{
    s_finalReleases = 0;
    CShared* object = new CShared();
    CVeskGdString* text = CVeskGdString::Allocate("shared");
    CVeskGenericData* yes = CVeskGdBoolean::Allocate(1);
    OnThreads(4, [&](int) {
        for (int i = 0; i < 20000; ++i) {
            void* pv = nullptr;
            object->QueryInterface(&IID_ITestShared, &pv);
            object->AddRef();
            text->AddRef();
            yes->AddRef();
            static_cast<IUnknown*>(pv)->Release();
            object->Release();
            text->Release();
            yes->Release();
        }
    });
    EXPECT_EQ(object->Count(), 1);
    EXPECT_EQ(text->AddRef(), 2u);
    text->Release();
    EXPECT_EQ(s_finalReleases, 0);

    // The last of many releases on many threads finishes the object exactly once.
    for (int i = 0; i < 3; ++i)
        object->AddRef();
    OnThreads(4, [&](int) { object->Release(); });
    EXPECT_EQ(s_finalReleases, 1);
    text->Release();
}

TEST_F(Concurrency, OneChainOfIndirectsServesReadersWritersAndCalls)
{
    CVeskGdIndirect* outer = CVeskGdIndirect::Allocate();
    CVeskGdIndirect* middle = CVeskGdIndirect::Allocate();
    CVeskGdIndirect* inner = CVeskGdIndirect::Allocate();
    middle->SetValue(inner);
    outer->SetValue(middle);
    CCounter* counter = new CCounter();
    CVeskGdObject* callable = CVeskGdObject::Allocate(counter, 1);
    inner->SetValue(callable);

    std::atomic<int> badReads{0};
    std::atomic<int> calls{0};
    OnThreads(4, [&](int role) {
        for (int i = 0; i < 10000; ++i) {
            if (role == 0) {
                // Writes land in the innermost slot: a number, then the callable object again.
                CVeskGdDouble* number = CVeskGdDouble::Allocate(i);
                outer->SetValue(number);
                number->Release();
                middle->SetValue(callable);
            } else if (role == 1) {
                CVeskGenericData* value = outer->GetValue(1);
                if (value->GetType() != CVeskGenericData::dtNumber &&
                    value->GetType() != CVeskGenericData::dtObject)
                    ++badReads;
                value->Release();
            } else {
                CVeskCommandContext context;
                if (outer->CallMethod(&context))
                    ++calls;
                CVeskGenericData* name = middle->GetProperty("name", 0);
                if (name)
                    name->Release();
            }
        }
    });
    EXPECT_EQ(badReads, 0);
    EXPECT_EQ(counter->calls.load(), calls.load());
    EXPECT_EQ(CVeskGdIndirect::GetLockDepth(), 0);
    EXPECT_EQ(inner->GetValue(0), callable);

    outer->Release();
    middle->Release();
    inner->Release();
    EXPECT_EQ(callable->Release(), 0u);
    EXPECT_EQ(counter->Release(), 0u);
}

TEST_F(Concurrency, VectorsSharingABlockAreCopiedAndDroppedOnManyThreads)
{
    long vectors = Probe("Vector");
    long doubles = Probe("Double");
    CVeskGdVector* shared = CVeskGdVector::Allocate(0);
    for (int i = 0; i < 16; ++i) {
        CVeskGdDouble* number = CVeskGdDouble::Allocate(i);
        shared->SetElement(i, number);
        number->Release();
    }

    std::atomic<int> wrongReads{0};
    OnThreads(4, [&](int role) {
        for (int i = 0; i < 5000; ++i) {
            CVeskGdVector* copy = static_cast<CVeskGdVector*>(shared->Copy());
            CVeskGenericData* element = copy->GetElement(i % 16);
            if (static_cast<CVeskGdDouble*>(element)->m_dValue != i % 16)
                ++wrongReads;
            element->Release();
            // Half the threads make their copy private, cloning the block the others share.
            if (role % 2)
                copy->SetElement(i % 16, CVeskGdBoolean::Allocate(1));
            copy->Release();
        }
    });
    EXPECT_EQ(wrongReads, 0);
    EXPECT_EQ(shared->m_pRep->m_nRefCount, 1);
    EXPECT_EQ(Printed(shared), "[0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15]");
    shared->Release();
    EXPECT_EQ(Probe("Vector"), vectors);
    EXPECT_EQ(Probe("Double"), doubles);
}

TEST_F(Concurrency, OneAssociativeArrayServesWritersAndReaders)
{
    const int keys = 16;
    const int rounds = 5000;
    CVeskGdDouble* zero = CVeskGdDouble::Allocate(0);
    VeskAssocArray* array = new VeskAssocArray(zero);
    zero->Release();
    IVeskCommand* object = &array->m_xCommand;
    auto key = [](int i) { return CDorlString(std::to_string(i % keys).c_str()); };

    std::atomic<int> badReads{0};
    OnThreads(4, [&](int role) {
        for (int i = 0; i < rounds; ++i) {
            if (role < 2) {
                // Every third store is the default and deletes the key. The last round of each
                // writer stores its own mark under every key.
                double number = i >= rounds - keys ? 1000 * (role + 1) : (i % 3 ? i : 0);
                Ref<CVeskGdDouble> value(CVeskGdDouble::Allocate(number));
                object->SetProperty(key(i), value.get());
                continue;
            }
            Ref<CVeskGenericData> value(object->GetProperty(key(i), 0));
            Ref<CVeskGenericData> size(object->GetProperty("*size", 0));
            if (value->GetType() != CVeskGenericData::dtNumber ||
                static_cast<CVeskGdDouble*>(size.get())->m_dValue > keys)
                ++badReads;
        }
    });
    EXPECT_EQ(badReads, 0);
    EXPECT_EQ(VeskAssocArray::GetLockDepth(), 0);
    EXPECT_EQ(array->Size(), keys);
    for (int i = 0; i < keys; ++i) {
        Ref<CVeskGenericData> value(object->GetProperty(key(i), 0));
        double number = static_cast<CVeskGdDouble*>(value.get())->m_dValue;
        EXPECT_TRUE(number == 1000 || number == 2000) << number;
    }
    EXPECT_EQ(array->Release(), 0u);
}
