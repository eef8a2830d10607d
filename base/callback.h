// Callback functors: small copyable values that call a member function on an object, or a free function.
#ifndef VESK_BASE_CALLBACK_H
#define VESK_BASE_CALLBACK_H

#include <cstddef>
#include <cstdint>
#include <cstring>

// The type-erased part of every functor: two machine words that hold a pointer to member function
// (a free function's pointer sits in the first word alone) and the object it is called on.
// A functor is empty when its first word and its callee are both 0.
class CBFunctorBase {
public:
    CBFunctorBase() : m_func{0, 0}, callee(nullptr) {}

    bool empty() const { return m_func[0] == 0 && callee == nullptr; }
    explicit operator bool() const { return !empty(); }

    // Copies `size` bytes of a pointer to member (or to function) out of the first words.
    void load(void* to, std::size_t size) const { std::memcpy(to, m_func, size); }

    std::uintptr_t m_func[2];
    void* callee;

protected:
    // `callable` points at a member or function pointer of `size` bytes.
    CBFunctorBase(const void* obj, const void* callable, std::size_t size)
        : m_func{0, 0}, callee(const_cast<void*>(obj)) {
        std::memcpy(m_func, callable, size);
    }
};

class CBFunctor0 : public CBFunctorBase {
public:
    typedef void (*Thunk)(const CBFunctorBase&);

    CBFunctor0() : thunk(nullptr) {}
    void operator()() const { thunk(*this); }

    Thunk thunk;

protected:
    CBFunctor0(Thunk t, const void* obj, const void* callable, std::size_t size)
        : CBFunctorBase(obj, callable, size), thunk(t) {}
};

template <class P1> class CBFunctor1 : public CBFunctorBase {
public:
    typedef void (*Thunk)(const CBFunctorBase&, P1);

    CBFunctor1() : thunk(nullptr) {}
    void operator()(P1 p1) const { thunk(*this, p1); }

    Thunk thunk;

protected:
    CBFunctor1(Thunk t, const void* obj, const void* callable, std::size_t size)
        : CBFunctorBase(obj, callable, size), thunk(t) {}
};

template <class P1, class P2, class P3> class CBFunctor3 : public CBFunctorBase {
public:
    typedef void (*Thunk)(const CBFunctorBase&, P1, P2, P3);

    CBFunctor3() : thunk(nullptr) {}
    void operator()(P1 p1, P2 p2, P3 p3) const { thunk(*this, p1, p2, p3); }

    Thunk thunk;

protected:
    CBFunctor3(Thunk t, const void* obj, const void* callable, std::size_t size)
        : CBFunctorBase(obj, callable, size), thunk(t) {}
};

// Member translators: the thunk copies the member pointer out of the functor before the call, so
// the functor itself may move (a subscription list growing) while the member runs.

template <class Callee, class MemFunc> class CBMemberTranslator0 : public CBFunctor0 {
    static_assert(sizeof(MemFunc) <= sizeof(CBFunctorBase::m_func), "member pointer too large");

public:
    CBMemberTranslator0(Callee& c, const MemFunc& m) : CBFunctor0(call, &c, &m, sizeof(MemFunc)) {}

    static void call(const CBFunctorBase& f) {
        MemFunc m = nullptr;
        f.load(&m, sizeof(MemFunc));
        (static_cast<Callee*>(f.callee)->*m)();
    }
};

template <class P1, class Callee, class MemFunc> class CBMemberTranslator1 : public CBFunctor1<P1> {
    static_assert(sizeof(MemFunc) <= sizeof(CBFunctorBase::m_func), "member pointer too large");

public:
    CBMemberTranslator1(Callee& c, const MemFunc& m) : CBFunctor1<P1>(call, &c, &m, sizeof(MemFunc)) {}

    static void call(const CBFunctorBase& f, P1 p1) {
        MemFunc m = nullptr;
        f.load(&m, sizeof(MemFunc));
        (static_cast<Callee*>(f.callee)->*m)(p1);
    }
};

template <class P1, class P2, class P3, class Callee, class MemFunc>
class CBMemberTranslator3 : public CBFunctor3<P1, P2, P3> {
    static_assert(sizeof(MemFunc) <= sizeof(CBFunctorBase::m_func), "member pointer too large");

public:
    CBMemberTranslator3(Callee& c, const MemFunc& m)
        : CBFunctor3<P1, P2, P3>(call, &c, &m, sizeof(MemFunc)) {}

    static void call(const CBFunctorBase& f, P1 p1, P2 p2, P3 p3) {
        MemFunc m = nullptr;
        f.load(&m, sizeof(MemFunc));
        (static_cast<Callee*>(f.callee)->*m)(p1, p2, p3);
    }
};

// Function translators: the function pointer is in the first word, the callee stays null.

template <class Func> class CBFunctionTranslator0 : public CBFunctor0 {
public:
    explicit CBFunctionTranslator0(Func fn) : CBFunctor0(call, nullptr, &fn, sizeof(Func)) {}

    static void call(const CBFunctorBase& f) {
        Func fn = nullptr;
        f.load(&fn, sizeof(Func));
        fn();
    }
};

template <class P1, class Func> class CBFunctionTranslator1 : public CBFunctor1<P1> {
public:
    explicit CBFunctionTranslator1(Func fn) : CBFunctor1<P1>(call, nullptr, &fn, sizeof(Func)) {}

    static void call(const CBFunctorBase& f, P1 p1) {
        Func fn = nullptr;
        f.load(&fn, sizeof(Func));
        fn(p1);
    }
};

template <class P1, class P2, class P3, class Func>
class CBFunctionTranslator3 : public CBFunctor3<P1, P2, P3> {
public:
    explicit CBFunctionTranslator3(Func fn) : CBFunctor3<P1, P2, P3>(call, nullptr, &fn, sizeof(Func)) {}

    static void call(const CBFunctorBase& f, P1 p1, P2 p2, P3 p3) {
        Func fn = nullptr;
        f.load(&fn, sizeof(Func));
        fn(p1, p2, p3);
    }
};

// makeFunctor(object, &Class::member): the functor's parameter types are those of the member.

template <class Callee, class C, class R>
CBMemberTranslator0<Callee, R (C::*)()> makeFunctor(Callee& c, R (C::*m)()) {
    return CBMemberTranslator0<Callee, R (C::*)()>(c, m);
}
template <class Callee, class C, class R>
CBMemberTranslator0<Callee, R (C::*)() const> makeFunctor(Callee& c, R (C::*m)() const) {
    return CBMemberTranslator0<Callee, R (C::*)() const>(c, m);
}
template <class Callee, class C, class R, class P1>
CBMemberTranslator1<P1, Callee, R (C::*)(P1)> makeFunctor(Callee& c, R (C::*m)(P1)) {
    return CBMemberTranslator1<P1, Callee, R (C::*)(P1)>(c, m);
}
template <class Callee, class C, class R, class P1>
CBMemberTranslator1<P1, Callee, R (C::*)(P1) const> makeFunctor(Callee& c, R (C::*m)(P1) const) {
    return CBMemberTranslator1<P1, Callee, R (C::*)(P1) const>(c, m);
}
template <class Callee, class C, class R, class P1, class P2, class P3>
CBMemberTranslator3<P1, P2, P3, Callee, R (C::*)(P1, P2, P3)> makeFunctor(Callee& c, R (C::*m)(P1, P2, P3)) {
    return CBMemberTranslator3<P1, P2, P3, Callee, R (C::*)(P1, P2, P3)>(c, m);
}
template <class Callee, class C, class R, class P1, class P2, class P3>
CBMemberTranslator3<P1, P2, P3, Callee, R (C::*)(P1, P2, P3) const> makeFunctor(Callee& c,
                                                                                R (C::*m)(P1, P2, P3) const) {
    return CBMemberTranslator3<P1, P2, P3, Callee, R (C::*)(P1, P2, P3) const>(c, m);
}

// makeFunctor((CBFunctorN<...>*)0, object, &Class::member): the functor type is named by the first
// argument, so a member whose parameters merely convert from the functor's can be used.

template <class Callee, class MemFunc>
CBMemberTranslator0<Callee, MemFunc> makeFunctor(CBFunctor0*, Callee& c, const MemFunc& m) {
    return CBMemberTranslator0<Callee, MemFunc>(c, m);
}
template <class P1, class Callee, class MemFunc>
CBMemberTranslator1<P1, Callee, MemFunc> makeFunctor(CBFunctor1<P1>*, Callee& c, const MemFunc& m) {
    return CBMemberTranslator1<P1, Callee, MemFunc>(c, m);
}
template <class P1, class P2, class P3, class Callee, class MemFunc>
CBMemberTranslator3<P1, P2, P3, Callee, MemFunc> makeFunctor(CBFunctor3<P1, P2, P3>*, Callee& c,
                                                             const MemFunc& m) {
    return CBMemberTranslator3<P1, P2, P3, Callee, MemFunc>(c, m);
}

// makeFunctor(&free_function).

template <class R> CBFunctionTranslator0<R (*)()> makeFunctor(R (*fn)()) {
    return CBFunctionTranslator0<R (*)()>(fn);
}
template <class R, class P1> CBFunctionTranslator1<P1, R (*)(P1)> makeFunctor(R (*fn)(P1)) {
    return CBFunctionTranslator1<P1, R (*)(P1)>(fn);
}
template <class R, class P1, class P2, class P3>
CBFunctionTranslator3<P1, P2, P3, R (*)(P1, P2, P3)> makeFunctor(R (*fn)(P1, P2, P3)) {
    return CBFunctionTranslator3<P1, P2, P3, R (*)(P1, P2, P3)>(fn);
}

#endif
