// ActionTrace hooks: an interface for tracing memory actions, with a no-op implementation.
#ifndef VESK_BASE_STKTRACE_H
#define VESK_BASE_STKTRACE_H

enum FuncWhere { FUNC_ENTER, FUNC_EXIT };

class ActionTrace {
public:
    virtual ~ActionTrace() {}
    virtual void operator()(FuncWhere where) = 0;
};

// Takes a pointer and a size, ignores both; its action does nothing.
class TraceMemWrite : public ActionTrace {
public:
    TraceMemWrite(void* ptr, int size);
    void operator()(FuncWhere where) override;

private:
    unsigned long m_words[2];
};

#endif
