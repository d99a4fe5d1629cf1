// Names for clang's thread-safety attributes; nothing with other compilers.
#ifndef SYNC_THREAD_SAFETY_H
#define SYNC_THREAD_SAFETY_H

#if defined(__clang__)
#define QV_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define QV_THREAD_ATTRIBUTE(attribute)
#endif

#define QV_CAPABILITY(kind) QV_THREAD_ATTRIBUTE(capability(kind))
#define QV_SCOPED_CAPABILITY QV_THREAD_ATTRIBUTE(scoped_lockable)
#define QV_GUARDED_BY(lock) QV_THREAD_ATTRIBUTE(guarded_by(lock))
#define QV_REQUIRES(...) QV_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define QV_ACQUIRE(...) QV_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define QV_TRY_ACQUIRE(...) QV_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define QV_RELEASE(...) QV_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define QV_EXCLUDES(...) QV_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define QV_NO_THREAD_SAFETY_ANALYSIS QV_THREAD_ATTRIBUTE(no_thread_safety_analysis)

#endif
