# Compiles for 32-bit x86 with SSE2 on a 64-bit system, through the compiler's multilib support.
# All floating point goes through SSE: the x87 unit's wider registers would round twice.
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")

# Packages of the system's own architecture are of no use here.
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/i386-linux-gnu/pkgconfig:/usr/share/pkgconfig)
