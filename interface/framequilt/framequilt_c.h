// SPDX-License-Identifier: Apache-2.0
/// \file
/// The library as plain functions and structs, for C and whatever calls C: the session of
/// session.h. docs/c-interface.md begins with an example.
///
/// **Errors.** Every function that can fail returns a code: `FRAMEQUILT_OK`, which is 0, or what
/// went wrong; `framequilt_last_error` has one line about it. A frame that cannot be joined is no
/// error. No exception leaves a function, and nothing is printed.
///
/// **Structs** begin with their size, which the caller sets to `sizeof`: later versions add members
/// at the end, and tell by it which ones a caller has. Members that are named nowhere are zero.
///
/// **Threads.** One session at a time in a process, used from one thread at a time, which need not
/// always be the same; `framequilt_steady_box` and `framequilt_copy_region` may be called from any
/// thread while the session exists. The functions without a session may be called from anywhere.
///
/// **Coordinates.** "Frame pixels" are those of the frames, x to the right and y down, counted from
/// the top-left corner of the first placed frame. The mosaic has frame pixels divided by the scale,
/// "mosaic pixels". Within the view their origin is its top-left corner, which moves when the
/// mosaic grows left or up; "steady" ones count from the top-left corner of the first placed frame,
/// which does not move.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "export.h"

#ifdef __cplusplus
extern "C" {
#endif

// --- Codes ---

/// What a function returns. After any other than `FRAMEQUILT_OK` nothing has changed.
typedef enum framequilt_code {
  FRAMEQUILT_OK = 0,
  FRAMEQUILT_E_ARGUMENT = 1,      ///< A null pointer, or a value that the function cannot take.
  FRAMEQUILT_E_SIZE = 2,          ///< The size of a struct is none that this library knows.
  FRAMEQUILT_E_OPTION = 3,        ///< An option is out of its range.
  FRAMEQUILT_E_SESSION_OPEN = 4,  ///< Another session of this process is open.
  FRAMEQUILT_E_START = 5,         ///< The worker threads could not be started.
  FRAMEQUILT_E_NO_OPENCL = 6,     ///< OpenCL alone was asked for and cannot be used.
  FRAMEQUILT_E_FRAME = 7,         ///< The frame does not fit the session.
  FRAMEQUILT_E_STOPPED = 8,       ///< The session was stopped: it takes no more frames.
  FRAMEQUILT_E_BUSY = 9,          ///< Another call on the session is under way.
  FRAMEQUILT_E_EMPTY = 10,        ///< There is no mosaic before two frames have joined.
  FRAMEQUILT_E_FILE = 11,         ///< The file could not be written.
  FRAMEQUILT_E_MEMORY = 12,       ///< Memory ran out.
  FRAMEQUILT_E_ENGINE = 13        ///< The engine failed for another reason.
} framequilt_code;

/// The name of a code, such as "FRAMEQUILT_E_SIZE"; "unknown code" for any other number.
FRAMEQUILT_EXPORT const char* framequilt_code_name(int32_t code);

// --- Version ---

/// Version of the library that is loaded, such as "0.1.0".
FRAMEQUILT_EXPORT const char* framequilt_version_text(void);

/// The same as a number to compare: major * 10000 + minor * 100 + patch.
FRAMEQUILT_EXPORT int32_t framequilt_version_number(void);

// --- Reasons ---

/// Why a frame is not in the mosaic.
enum framequilt_reason {
  FRAMEQUILT_NO_REASON = 0,
  FRAMEQUILT_NO_OVERLAP = 1,        ///< No more corners agree on an offset than do by chance.
  FRAMEQUILT_TOO_FEW_MATCHES = 2,   ///< Some more do, but not enough to trust it.
  FRAMEQUILT_MOVED_TOO_LITTLE = 3,  ///< Hardly anything new is in view.
  FRAMEQUILT_MOVED_TOO_FAR = 4,     ///< Hardly anything of the frame before is in view.
  FRAMEQUILT_MOVING_SCENE = 5,      ///< Motion criterion: the view changed more than the limit.
  FRAMEQUILT_BRIGHTNESS = 6,        ///< Overlap criterion: not equally bright as the mosaic.
  FRAMEQUILT_SHARPNESS = 7,         ///< Overlap criterion: not equally sharp as the mosaic.
  FRAMEQUILT_MOSAIC_FULL = 8        ///< The mosaic had reached its limit before.
};

/// How a refusal is spoken of. The texts live as long as the library is loaded.
typedef struct framequilt_words {
  size_t size;           ///< `sizeof(framequilt_words)`
  const char* reason;    ///< "moved too far"
  const char* quantity;  ///< What was measured: "overlap".
  const char* unit;      ///< "%"; empty for a count.
  const char* relation;  ///< How the value has to stand to the limit: "needs more than".
  const char* advice;    ///< "slow down or take frames more often"
} framequilt_words;

/// The words for a `framequilt_reason`; all empty for `FRAMEQUILT_NO_REASON`.
/// \return FRAMEQUILT_OK, _E_ARGUMENT, _E_SIZE.
FRAMEQUILT_EXPORT framequilt_code framequilt_reason_words(int32_t reason, framequilt_words* words);

// --- Options ---

/// By what frames are judged, once their offset is known.
enum framequilt_criterion {
  FRAMEQUILT_BY_MOTION = 0,  ///< How much the view changed since the frame before.
  FRAMEQUILT_BY_OVERLAP = 1  ///< Whether both sides of the overlap are equally bright and sharp.
};

/// What does the work.
enum framequilt_backend {
  FRAMEQUILT_BACKEND_AUTO = 0,    ///< OpenCL where machine and options allow it, else the host.
  FRAMEQUILT_BACKEND_OPENCL = 1,  ///< OpenCL or an error.
  FRAMEQUILT_BACKEND_HOST = 2     ///< The processor.
};

/// Where a frame is on its way through `framequilt_add`.
enum framequilt_stage {
  FRAMEQUILT_COPYING = 0,    ///< About to be copied.
  FRAMEQUILT_STITCHING = 1,  ///< About to be given to the engine, which cannot be interrupted.
  FRAMEQUILT_DONE = 2        ///< Decided; too late to cancel.
};

/// Receives one fixed line of the engine: `line` has `length` bytes and a zero behind them, no line
/// end, and is not always UTF-8; it is gone after the call. Calls come from the thread that uses
/// the session and from the engine's own, which may have something to say between two calls, too;
/// never two at once, and none after `framequilt_stop`. Must not call the library.
typedef void (*framequilt_log_function)(const char* line, size_t length, void* user);

/// Called on the thread of `framequilt_add` with a `framequilt_stage` and the number of the frame;
/// 0 cancels the frame. Must not call the library with this session.
typedef int32_t (*framequilt_progress_function)(int32_t stage, int64_t frame, void* user);

/// How a session is to work. `framequilt_init_options` sets the defaults, named at the ends below.
typedef struct framequilt_options {
  size_t size;              ///< `sizeof(framequilt_options)`
  int32_t rows;             ///< Size of every frame, in pixels; has to be given.
  int32_t cols;             ///< Likewise.
  int32_t channels;         ///< Of the mosaic: 3 (blue, green, red; the default) or 1 (gray).
  int32_t criterion;        ///< `framequilt_criterion`; by motion.
  int32_t dynamic_scene;    ///< Not 0: narrow limits, for a scene that moves by itself. 0.
  int32_t scale;            ///< Frame pixels per mosaic pixel: 1, 2; 0 decides by the size. 0.
  int32_t corner_budget;    ///< 0..1000: more corners join frames that overlap less. 8.
  int32_t max_rows;         ///< The mosaic is full once it has max_rows * max_cols pixels,
  int32_t max_cols;         ///< below 2^31. 20000 each.
  int32_t backend;          ///< `framequilt_backend`; auto.
  const char* kernel_file;  ///< Source of the OpenCL kernels; null: that beside the library. Null.
  framequilt_log_function log;            ///< Receives the engine's lines; null drops them. Null.
  void* log_user;                         ///< Handed to `log`. Null.
  framequilt_progress_function progress;  ///< May be null. Null.
  void* progress_user;                    ///< Handed to `progress`. Null.
} framequilt_options;

/// Sets every member to its default. \param size  `sizeof *options`.
/// \return FRAMEQUILT_OK, _E_ARGUMENT, _E_SIZE.
FRAMEQUILT_EXPORT framequilt_code framequilt_init_options(framequilt_options* options, size_t size);

// --- Session ---

/// A run of the library and its mosaic.
typedef struct framequilt_session framequilt_session;

/// Opens a session; `*session` is null after a failure, about which `framequilt_last_error(NULL)`
/// tells. With OpenCL the kernels are built, which may take seconds.
/// \return FRAMEQUILT_OK, _E_ARGUMENT, _E_SIZE, _E_OPTION, _E_SESSION_OPEN, _E_START, _E_NO_OPENCL,
///         _E_MEMORY, _E_ENGINE.
FRAMEQUILT_EXPORT framequilt_code framequilt_open(const framequilt_options* options,
                                                  framequilt_session** session);

/// Ends the run and its threads, so that another session can be opened; the mosaic stays. Without
/// effect after the first time. \return FRAMEQUILT_OK, _E_ARGUMENT, _E_BUSY.
FRAMEQUILT_EXPORT framequilt_code framequilt_stop(framequilt_session* session);

/// Stops the session and releases it and its mosaic; the handle is gone afterwards. Null is fine.
/// \return FRAMEQUILT_OK, _E_BUSY: the session stays.
FRAMEQUILT_EXPORT framequilt_code framequilt_close(framequilt_session* session);

/// What went wrong and what to do, in one line: in the last call that failed on the session, but
/// for `framequilt_steady_box` and `framequilt_copy_region`; with null in the last call of this
/// thread that failed, whatever it was called with. Empty before any failed. Valid until the next
/// failure.
FRAMEQUILT_EXPORT const char* framequilt_last_error(const framequilt_session* session);

/// What a session has decided or found out.
typedef struct framequilt_state {
  size_t size;          ///< `sizeof(framequilt_state)`
  int64_t first_frame;  ///< The frame that lies, or is to lie, at placement (0, 0).
  const char* backend;  ///< What does the work: "opencl" or "host". Lives as long as the library.
  int32_t scale;        ///< Frame pixels per mosaic pixel: 1 or 2.
  int32_t channels;     ///< Of the mosaic.
} framequilt_state;

/// Fills `state`. \return FRAMEQUILT_OK, _E_ARGUMENT, _E_SIZE, _E_BUSY.
FRAMEQUILT_EXPORT framequilt_code framequilt_get_state(framequilt_session* session,
                                                       framequilt_state* state);

// --- Frames ---

/// What the bytes of a pixel are, 8 bits each.
enum framequilt_order {
  FRAMEQUILT_BGR = 0,   ///< 3 channels.
  FRAMEQUILT_RGB = 1,   ///< 3 channels.
  FRAMEQUILT_BGRA = 2,  ///< 4 channels; the last one is ignored.
  FRAMEQUILT_GRAY = 3   ///< 1 channel.
};

/// Pixels of the caller.
typedef struct framequilt_frame {
  size_t size;                  ///< `sizeof(framequilt_frame)`
  const unsigned char* pixels;  ///< Top-left pixel; only read, and not kept.
  size_t stride_bytes;          ///< From a row to the next; 0 where they are packed.
  int32_t rows;                 ///< As the session's.
  int32_t cols;                 ///< As the session's.
  int32_t channels;             ///< Bytes per pixel, as `order` says.
  int32_t order;                ///< `framequilt_order`
  int32_t has_hint;             ///< Not 0: the hint holds.
  int32_t hint_x;    ///< How far the camera moved since the frame handed over before, in frame
  int32_t hint_y;    ///< pixels in the sense of the placements; corners are looked for there first.
  int32_t reserved;  ///< 0
} framequilt_frame;

/// A point, or a way from one to another.
typedef struct framequilt_point {
  int32_t x;  ///< To the right.
  int32_t y;  ///< Down.
} framequilt_point;

/// A box of pixels.
typedef struct framequilt_rect {
  int32_t x;       ///< Leftmost column.
  int32_t y;       ///< Topmost row.
  int32_t width;   ///< In columns.
  int32_t height;  ///< In rows.
} framequilt_rect;

/// A measured value and the limit it is held against, both in one unit.
typedef struct framequilt_measure {
  double value;      ///< NaN where nothing could be measured.
  double limit;      ///< What it has to reach, exceed or stay below.
  int32_t known;     ///< 1: measured for this frame. 0: the engine did not come so far.
  int32_t reserved;  ///< 0
} framequilt_measure;

/// Whether a frame is in the mosaic.
enum framequilt_verdict {
  FRAMEQUILT_WAITING = 0,   ///< A first frame: placed as soon as another joins it.
  FRAMEQUILT_JOINED = 1,    ///< In the mosaic.
  FRAMEQUILT_REFUSED = 2,   ///< Not in the mosaic; `reason` says why.
  FRAMEQUILT_CANCELLED = 3  ///< The progress function returned 0; as if it had not been offered.
};

/// What became of one frame.
typedef struct framequilt_result {
  size_t size;           ///< `sizeof(framequilt_result)`
  int64_t frame;         ///< Frames handed over before; a cancelled one does not count.
  int32_t verdict;       ///< `framequilt_verdict`
  int32_t reason;        ///< `framequilt_reason`
  double judged;         ///< The measured value that `reason` rests on; NaN: not measurable.
  double limit;          ///< The limit that it did not keep.
  int32_t became_first;  ///< 1: refused like two before it beside a first frame that nothing has
                         ///< joined; this frame is the first one from now on.
  int32_t full;          ///< 1: the mosaic has reached its limit, every later frame is refused.

  // Of a joined frame.
  framequilt_point placement;        ///< Top-left corner in frame pixels, steady.
  framequilt_point mosaic_position;  ///< Top-left corner in mosaic pixels, within the view.
  framequilt_rect changed;           ///< What this frame changed, likewise.
  framequilt_point growth_shift;     ///< How far it moved whatever lay in the view before.

  // What this frame's own call measured.
  int32_t match_count;            ///< Pairs of corners that agree.
  int32_t has_offset;             ///< 1: `offset` holds.
  framequilt_point offset;        ///< Since the frame it was matched with, in frame pixels.
  framequilt_measure matches;     ///< The same as match_count; at least the limit.
  framequilt_measure moved;       ///< Percent of the side it moved along; more than the limit.
  framequilt_measure overlap;     ///< Percent of that side; more than the limit.
  framequilt_measure change;      ///< Motion criterion: gray levels; less than the limit.
  framequilt_measure brightness;  ///< Overlap criterion: difference; less than the limit.
  framequilt_measure sharpness;   ///< Overlap criterion: difference; less than the limit.
} framequilt_result;

/// Takes the next frame. \param result  Its `size` set; receives what became of the frame.
/// \return FRAMEQUILT_OK, also for a frame that was refused, _E_ARGUMENT, _E_SIZE, _E_FRAME,
///         _E_STOPPED, _E_BUSY, _E_MEMORY, _E_ENGINE; the session goes on.
FRAMEQUILT_EXPORT framequilt_code framequilt_add(framequilt_session* session,
                                                 const framequilt_frame* frame,
                                                 framequilt_result* result);

/// Bytes that hold any text of `framequilt_explain`.
#define FRAMEQUILT_EXPLANATION_BYTES 256

/// Writes one line about a refused frame, such as "moved too far: overlap 6 %, needs more than
/// 10 %"; nothing for any other. Ends with a zero, and is cut where it does not fit.
/// \return FRAMEQUILT_OK, _E_ARGUMENT, _E_SIZE.
FRAMEQUILT_EXPORT framequilt_code framequilt_explain(const framequilt_result* result, char* text,
                                                     size_t text_bytes);

// --- Mosaic ---

/// The box of the mosaic that frames fill. No copy: the pixels are the session's.
typedef struct framequilt_view {
  size_t size;                  ///< `sizeof(framequilt_view)`
  const unsigned char* pixels;  ///< Top-left pixel; 0 where no frame lies. Do not write.
  size_t stride_bytes;          ///< From a row to the next.
  int32_t rows;                 ///< Height in pixels.
  int32_t cols;                 ///< Width in pixels.
  int32_t channels;             ///< 3 (blue, green, red) or 1 (gray).
  int32_t reserved;             ///< 0
  framequilt_rect box;          ///< Where the box lies, in steady mosaic pixels.
} framequilt_view;

/// The view is valid until the next call on the session, but for those of any thread.
/// \return FRAMEQUILT_OK, _E_ARGUMENT, _E_SIZE, _E_EMPTY, _E_BUSY.
FRAMEQUILT_EXPORT framequilt_code framequilt_view_mosaic(framequilt_session* session,
                                                         framequilt_view* view);

/// Writes the box that frames fill as a PNG file. An older file of that name stays until the new
/// one is complete. \param path  Ends in ".png".
/// \return FRAMEQUILT_OK, _E_ARGUMENT, _E_EMPTY, _E_BUSY, _E_FILE, _E_MEMORY.
FRAMEQUILT_EXPORT framequilt_code framequilt_save_mosaic(framequilt_session* session,
                                                         const char* path);

/// The box that frames fill, in steady mosaic pixels; without extent before two frames have joined.
/// From any thread. \return FRAMEQUILT_OK, _E_ARGUMENT.
FRAMEQUILT_EXPORT framequilt_code framequilt_steady_box(const framequilt_session* session,
                                                        framequilt_rect* box);

/// Copies a part of the mosaic; pixels where no frame lies become 0. From any thread: waits while a
/// frame is being blended, not for the rest of its way.
/// \param region  In steady mosaic pixels.
/// \param pixels  Receives region->height rows of region->width pixels.
/// \param stride_bytes  From a row to the next in `pixels`; 0 packs them.
/// \param pixels_bytes  How many there are room for.
/// \return FRAMEQUILT_OK, _E_ARGUMENT, _E_MEMORY, _E_ENGINE.
FRAMEQUILT_EXPORT framequilt_code framequilt_copy_region(const framequilt_session* session,
                                                         const framequilt_rect* region,
                                                         unsigned char* pixels, size_t stride_bytes,
                                                         size_t pixels_bytes);

#ifdef __cplusplus
}  // extern "C"
#endif
