#pragma once

// The run-time class pattern every registered class follows: a cached
// descriptor (gpDesc) found by name in the registry's "ClassDictionary", IsA()
// answering the same descriptor, Cast() accepting derived classes, and
// RxInit()/RxUninit() creating and deleting the descriptor.
//
// Module classes use PFRX_DEFINE_MEMBERS: Desc() only looks the class up, so
// it is null until the module's entry point has run RxInit(). Host classes use
// PFRX_DEFINE_HOST_MEMBERS: their Desc() registers the class (and its
// ancestors) on first use, so the host works without an explicit start-up
// order.

class PfRxClass;
class PfRxObject;

using PfRxFactory = PfRxObject* (*)();

template <class T>
PfRxObject* PfRxCreateInstance()
{
    return new T();
}

PfRxClass* PfRxLookupClass(const wchar_t* name);
void PfRxInitClass(PfRxClass*& cache, const wchar_t* name, const wchar_t* parentName, PfRxFactory factory);
void PfRxUninitClass(PfRxClass*& cache, const wchar_t* name);
bool PfRxIsKindOf(const PfRxObject* obj, const PfRxClass* cls);

#define PFRX_DECLARE_MEMBERS(Class)                   \
public:                                               \
    static PfRxClass* gpDesc;                         \
    static PfRxClass* Desc();                         \
    PfRxClass* IsA() const override;                  \
    static Class* Cast(const PfRxObject* obj);        \
    static void RxInit();                             \
    static void RxUninit();                           \
                                                      \
private:

#define PFRX_DEFINE_COMMON_MEMBERS(Class, Parent, factory)                                   \
    PfRxClass* Class::gpDesc = nullptr;                                                      \
    PfRxClass* Class::IsA() const { return Class::Desc(); }                                  \
    Class* Class::Cast(const PfRxObject* obj)                                                \
    {                                                                                        \
        return PfRxIsKindOf(obj, Class::Desc()) ? static_cast<Class*>(const_cast<PfRxObject*>(obj)) \
                                                : nullptr;                                   \
    }                                                                                        \
    void Class::RxInit() { PfRxInitClass(gpDesc, L## #Class, L## #Parent, factory); }        \
    void Class::RxUninit() { PfRxUninitClass(gpDesc, L## #Class); }

#define PFRX_DEFINE_MEMBERS(Class, Parent, factory)       \
    PFRX_DEFINE_COMMON_MEMBERS(Class, Parent, factory)    \
    PfRxClass* Class::Desc()                              \
    {                                                     \
        if (!gpDesc)                                      \
            gpDesc = PfRxLookupClass(L## #Class);         \
        return gpDesc;                                    \
    }

#define PFRX_DEFINE_HOST_MEMBERS(Class, Parent, factory)  \
    PFRX_DEFINE_COMMON_MEMBERS(Class, Parent, factory)    \
    PfRxClass* Class::Desc()                              \
    {                                                     \
        if (!gpDesc)                                      \
            gpDesc = PfRxLookupClass(L## #Class);         \
        if (!gpDesc) {                                    \
            Parent::Desc();                               \
            RxInit();                                     \
        }                                                 \
        return gpDesc;                                    \
    }
