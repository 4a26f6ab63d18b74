#pragma once

// Macros that sources written against the platform's own base classes use. What reports in a debug build of
// those does nothing here; CheckPointer works. For streams.h only: code of this project uses none of them.

#define CheckPointer(pointer, result)                                                                        \
    {                                                                                                        \
        if ((pointer) == nullptr)                                                                            \
            return (result);                                                                                 \
    }

#define ASSERT(condition) (static_cast<void>(0))
#define KASSERT(condition) (static_cast<void>(0))
#define EXECUTE_ASSERT(expression) (static_cast<void>(expression))
#define DbgLog(arguments) (static_cast<void>(0))
#define DbgBreak(text) (static_cast<void>(0))
#define DbgInitialise(instance) (static_cast<void>(0))
#define DbgTerminate() (static_cast<void>(0))
#define NOTE(text) (static_cast<void>(0))
#define NOTE1(text, a) (static_cast<void>(0))
#define NOTE2(text, a, b) (static_cast<void>(0))
#define NOTE3(text, a, b, c) (static_cast<void>(0))
#define ValidateReadPtr(pointer, bytes) (static_cast<void>(0))
#define ValidateWritePtr(pointer, bytes) (static_cast<void>(0))
#define ValidateReadWritePtr(pointer, bytes) (static_cast<void>(0))
#define ValidateStringPtr(pointer) (static_cast<void>(0))
