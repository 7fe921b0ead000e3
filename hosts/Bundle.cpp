// CoreImageFilter.so, the bundle that hosts open by path, holds no code: it only leads the dynamic
// linker to the library beside it, in the variant for this machine. Looking a symbol up in the
// bundle finds the library's.
