#include "bridge/guarded_call.hpp"

#include <windows.h>

// The compiler has no __try; the frames that the system looks for are written out here.

namespace {

constexpr DWORD kThrownByThisCompiler = 0x20474343;

}  // namespace

// The filter, called by the code below.
extern "C" __attribute__((used)) int IsCaughtByGuardedCall(DWORD code) {
    switch (code) {
        case kThrownByThisCompiler:
        case EXCEPTION_BREAKPOINT:
        case EXCEPTION_SINGLE_STEP:
        case EXCEPTION_STACK_OVERFLOW:
            return 0;
        default:
            return 1;
    }
}

#ifdef _WIN64

// A table of the range that is guarded, its filter and where to go on; the system's own handler reads it.
extern "C" __attribute__((used)) LONG FilterForGuardedCall(EXCEPTION_POINTERS* exception, void* /*frame*/) {
    return IsCaughtByGuardedCall(exception->ExceptionRecord->ExceptionCode) != 0 ? EXCEPTION_EXECUTE_HANDLER
                                                                                 : EXCEPTION_CONTINUE_SEARCH;
}

asm(R"(
    .text
    .globl CallGuarded
    .def CallGuarded; .scl 2; .type 32; .endef
    .seh_proc CallGuarded
CallGuarded:
    subq $40, %rsp
    .seh_stackalloc 40
    .seh_endprologue
.Lguarded_begin:
    movq %rcx, %rax
    movq %rdx, %rcx
    call *%rax
    nop
.Lguarded_end:
    movl $1, %eax
    jmp .Lguarded_return
.Lguarded_caught:
    xorl %eax, %eax
.Lguarded_return:
    addq $40, %rsp
    ret
    .seh_handler __C_specific_handler, @except
    .seh_handlerdata
    .long 1
    .rva .Lguarded_begin, .Lguarded_end, FilterForGuardedCall, .Lguarded_caught
    .text
    .seh_endproc
)");

#else

// A record in the thread's chain of handlers, on the stack below the saved registers. The handler takes the stack back
// to the record.
asm(R"(
    .text
    .globl _CallGuarded
    .def _CallGuarded; .scl 2; .type 32; .endef
_CallGuarded:
    pushl %ebp
    movl %esp, %ebp
    pushl %ebx
    pushl %esi
    pushl %edi
    pushl $_HandlerOfGuardedCall
    pushl %fs:0
    movl %esp, %fs:0
    pushl 12(%ebp)
    call *8(%ebp)
    addl $4, %esp
    movl $1, %eax
.Lguarded_return:
    popl %fs:0
    addl $4, %esp
    popl %edi
    popl %esi
    popl %ebx
    popl %ebp
    ret

    .def _HandlerOfGuardedCall; .scl 3; .type 32; .endef
_HandlerOfGuardedCall:
    pushl %ebp
    movl %esp, %ebp
    movl 8(%ebp), %eax
    testl $6, 4(%eax)
    jne .Lguarded_continue
    pushl (%eax)
    call _IsCaughtByGuardedCall
    addl $4, %esp
    testl %eax, %eax
    je .Lguarded_continue
    pushl $0
    pushl 8(%ebp)
    pushl $.Lguarded_unwound
    pushl 12(%ebp)
    call _RtlUnwind@16
.Lguarded_unwound:
    movl 12(%ebp), %esp
    xorl %eax, %eax
    jmp .Lguarded_return
.Lguarded_continue:
    movl $1, %eax
    popl %ebp
    ret
)");

#endif
