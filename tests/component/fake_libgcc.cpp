// A library with the name of the compiler's run-time library for exceptions, as another module of the process may have
// brought it along. It accepts unwind tables and never looks at them.

extern "C" {
__declspec(dllexport) void __register_frame_info(const void* /*begin*/, void* /*object*/) {}
__declspec(dllexport) void* __deregister_frame_info(const void* /*begin*/) { return nullptr; }
}
