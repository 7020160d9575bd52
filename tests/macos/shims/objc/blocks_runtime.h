// Check-only: the blocks runtime (Block.h on the platform).
#pragma once

#ifdef __cplusplus
extern "C" {
#endif
void* _Block_copy(const void* block);
void _Block_release(const void* block);
#ifdef __cplusplus
}
#endif
#define Block_copy(x) ((__typeof(x))_Block_copy((const void*)(x)))
#define Block_release(x) _Block_release((const void*)(x))
