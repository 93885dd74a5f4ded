#include "com/guarded_call.hpp"

// The compiler has no __try; the frames that the system looks for are written out here.

namespace paylodge {
namespace {

constexpr DWORD kThrownByThisCompiler = 0x20474343;
constexpr DWORD kThrownByThePlatformsCompiler = 0xE06D7363;

}  // namespace

bool __cdecl IsForeignCppException(DWORD code) noexcept { return code == kThrownByThePlatformsCompiler; }

bool __cdecl IsForeignExceptionOrCrash(DWORD code) noexcept {
    switch (code) {
        case kThrownByThisCompiler:
        case EXCEPTION_BREAKPOINT:
        case EXCEPTION_SINGLE_STEP:
        case EXCEPTION_STACK_OVERFLOW:
            return false;
        default:
            return true;
    }
}

}  // namespace paylodge

#ifdef _WIN64

// The frame of CallGuarded from the stack pointer on.
struct GuardedFrame {
    void* home_area[4];
    paylodge::ExceptionFilter* filter;
    // Of the exception that was caught.
    DWORD code;
};

// The system's own handler reads a table of the range that is guarded, this filter, and where to go on.
extern "C" __attribute__((used)) LONG FilterForGuardedCall(EXCEPTION_POINTERS* exception, GuardedFrame* frame) {
    frame->code = exception->ExceptionRecord->ExceptionCode;
    return frame->filter(frame->code) ? EXCEPTION_EXECUTE_HANDLER : EXCEPTION_CONTINUE_SEARCH;
}

asm(R"(
    .text
    .globl CallGuarded
    .def CallGuarded; .scl 2; .type 32; .endef
    .seh_proc CallGuarded
CallGuarded:
    subq $56, %rsp
    .seh_stackalloc 56
    .seh_endprologue
    movq %r8, 32(%rsp)
    movq %rcx, %rax
    movq %rdx, %rcx
.Lguarded_begin:
    call *%rax
    nop
.Lguarded_end:
    xorl %eax, %eax
    jmp .Lguarded_return
.Lguarded_caught:
    movl 40(%rsp), %eax
.Lguarded_return:
    addq $56, %rsp
    ret
    .seh_handler __C_specific_handler, @except
    .seh_handlerdata
    .long 1
    .rva .Lguarded_begin, .Lguarded_end, FilterForGuardedCall, .Lguarded_caught
    .text
    .seh_endproc
)");

#else

// A record in the thread's chain of handlers, on the stack below the saved registers and 36 bytes below the caller's
// filter. The handler takes the stack back to the record, with the code in eax.
extern "C" __attribute__((used)) int IsCaughtByGuardedCall(DWORD code, const char* record) {
    constexpr size_t kFromRecordToFilter = 36;
    return (*reinterpret_cast<paylodge::ExceptionFilter* const*>(record + kFromRecordToFilter))(code) ? 1 : 0;
}

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
    xorl %eax, %eax
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
    pushl 12(%ebp)
    pushl (%eax)
    call _IsCaughtByGuardedCall
    addl $8, %esp
    testl %eax, %eax
    je .Lguarded_continue
    pushl $0
    pushl 8(%ebp)
    pushl $.Lguarded_unwound
    pushl 12(%ebp)
    call _RtlUnwind@16
.Lguarded_unwound:
    movl 8(%ebp), %eax
    movl (%eax), %eax
    movl 12(%ebp), %esp
    leal 20(%esp), %ebp
    jmp .Lguarded_return
.Lguarded_continue:
    movl $1, %eax
    popl %ebp
    ret
)");

#endif
