#pragma once

#include <cstdint>

#include "tessarin/error_codes.h"
#include "tessarin/export.h"
#include "tessarin/pcm_stream.h"
#include "tessarin/progress_sink.h"

namespace tessarin {

/// A whole recording in memory, for hosts that draw, edit or cut audio. Positions and counts are in
/// sample frames, one sample of every channel, unless they say otherwise. Used by one thread at a
/// time.
///
/// In every read `*count` is the number of frames wanted on entry and delivered on return, cut at
/// the end of the recording; a failed read leaves 0. Reads give 0; 2 for a null pointer; 3 for a
/// `start` outside the recording, or a channel that a source of several channels does not have.
/// Channels count from 1, and 0 means all of them, interleaved. A source of one channel gives that
/// whatever `channel` says; what the factories make has one channel of 16 bits.
///
/// Kept: on a source of several channels a read of one channel works the other way round. It takes
/// a value out of each of the `*count` frames that `buffer` holds, and writes these values into the
/// source one after the other, from that channel of frame `start` on.
class IPCMDataSource {
public:
    virtual ~IPCMDataSource() = default;

    /// Fills in the format, with the rate in 16.16 fixed point. Returns 0, or 2 for null.
    virtual error_code GetFormat(PCMFormat* out) const = 0;
    /// 16.16 fixed point.
    virtual uint32_t GetSampleRate() const = 0;
    /// 8 or 16.
    virtual uint16_t GetBitsPerSample() const = 0;
    /// Bytes of one sample of all channels.
    virtual uint32_t GetBytesPerFrame() const = 0;
    /// Samples of one channel.
    virtual int32_t GetNumSamples() const = 0;
    /// Bytes of all samples.
    virtual int32_t GetByteLength() const = 0;

    /// The length of `samples` samples of each channel in milliseconds.
    virtual double SamplesToMs(int32_t samples) const = 0;
    /// How many whole samples of each channel fill `bytes` bytes.
    virtual int32_t BytesToSamples(int32_t bytes) const = 0;
    /// The bytes of `samples` samples of each channel, held to the range of the result.
    virtual int32_t SamplesToBytes(int32_t samples) const = 0;
    /// The samples of `ms` milliseconds, rounded toward zero and held to the range of the result.
    virtual int32_t MsToSamples(int32_t ms) const = 0;

    /// Reads samples as they are stored. `buffer` has room for `*count` frames.
    virtual error_code ReadSamples(void* buffer, int32_t start, uint32_t* count,
                                   int32_t channel) = 0;
    /// ReadSamples with 8-bit samples widened to 16 bits: (byte - 128) * 256.
    virtual error_code ReadSamplesInt16(int16_t* buffer, int32_t start, uint32_t* count,
                                        int32_t channel) = 0;
    /// ReadSamplesInt16 as floats, which keep the 16-bit range.
    virtual error_code ReadSamplesFloat(float* buffer, int32_t start, uint32_t* count,
                                        int32_t channel) = 0;
    /// Replaces `count` samples from `start` on, as far as the recording reaches: truncated toward
    /// zero and held to -32767..32767. Returns 0; 6 for a source other than 16-bit mono; 2 without
    /// `samples`; 3 for a `start` outside the recording or a negative count.
    virtual error_code WriteSamplesFloat(const float* samples, int32_t start, int32_t count) = 0;
    /// The bytes of all samples, which the host may change; null when there are none. Valid until
    /// CopyFrom or Destroy.
    virtual uint8_t* GetData() const = 0;

    /// A new source with a copy of the samples, the caller's, or null without memory.
    virtual IPCMDataSource* Clone() const = 0;
    /// Replaces format and samples by a copy of those of `other`. Returns 0, or 7, without memory
    /// or for a source that contradicts itself, with nothing left in this one.
    virtual error_code CopyFrom(const IPCMDataSource* other) = 0;
    /// Frees the object.
    virtual void Destroy() = 0;
};

/// A window onto a data source, read as a stream. Borrows its source, which must outlive it. Used
/// by one thread at a time.
///
/// Kept: GetSize counts samples where other streams count bytes, so the engine takes a stream of
/// 16-bit audio to be half as long as it is. Reads go on beyond the end of the range. A host that
/// hands a range to the engine wraps the stream in one of its own, which ends where it should and
/// gives its size in bytes.
class IPCMDataSourceStream : public IQuibPCMStream {
public:
    virtual ~IPCMDataSourceStream() = default;

    /// Has Start go to `startSample`, or to 0 when the source has no such sample, and GetSize
    /// answer `numSamples`, or what is left of the source from there. A negative count is 0.
    virtual void SetRange(int32_t startSample, int32_t numSamples) = 0;
    /// Reads from `source` from now on; null is allowed and gives no audio. The range stays: set it
    /// again if it is to change, and call Start.
    virtual void SetSource(IPCMDataSource* source) = 0;
    /// Frees the object.
    virtual void Destroy() = 0;
};

} // namespace tessarin

/// Reads channel 1 of the audio file `path` into memory, as 16-bit mono at the rate of `target`
/// (16.16 fixed point; nothing else of it counts). `sink` may be null. On success `*out` is the
/// caller's, freed by DestroyPCMDataSource. Returns the code of the reader when the file does not
/// open, 2 for a null argument or a rate that cannot be converted, 1 without memory. Kept: a load
/// that the sink cancels, or that a failing read ends, succeeds with an empty source.
TESSARIN_API int32_t CreatePCMDataSource(const char* path, const tessarin::PCMFormat* target,
                                         tessarin::ProgressSink* sink,
                                         tessarin::IPCMDataSource** out);

/// Reads each channel of the audio file `path`, at the file's own rate, into a source of its own:
/// channel n into out[n - 1]. `out` is an array with a place for every channel of the file and at
/// least two places. The file is read once for each channel, each read with a progress of its own.
/// Returns as CreatePCMDataSource; after a failure every place that was filled is null again.
TESSARIN_API int32_t CreateMultiChannelPCMDataSource(const char* path, tessarin::ProgressSink* sink,
                                                     tessarin::IPCMDataSource** out);

/// Gives in `*count` how many channels the audio file `path` has, 0 on failure. Returns 0, 2 for a
/// null argument, or the code of the reader.
TESSARIN_API int32_t GetPCMChannelCount(const char* path, uint32_t* count);

/// CreateMultiChannelPCMDataSource for an array of `capacity` places, all of which are cleared
/// first. `*count` receives the number of channels, also when they are more than the places. The
/// file is read once, so a progress runs once. Returns as CreatePCMDataSource, and 3 for too few
/// places; after a failure every place is null.
TESSARIN_API int32_t CreateMultiChannelPCMDataSources(const char* path,
                                                      tessarin::ProgressSink* sink,
                                                      tessarin::IPCMDataSource** out,
                                                      uint32_t capacity, uint32_t* count);

/// Reads all of a host's stream into memory, in the format that it has. `stream` is used during the
/// call only; where it delivers less than its size says, the rest is zero. Returns as
/// CreatePCMDataSource, and 12 for a format other than 8 or 16 bits with at least one channel.
TESSARIN_API int32_t CreatePCMDataSourceFromQuibStream(tessarin::IQuibPCMStream* stream,
                                                       tessarin::ProgressSink* sink,
                                                       tessarin::IPCMDataSource** out);

/// Frees a data source; null is allowed.
TESSARIN_API void DestroyPCMDataSource(tessarin::IPCMDataSource* source);

/// Makes a stream over all of `source`, which may be null until SetSource. Returns 0, or 1
/// without memory or without `out`. Freed by DestroyPCMDataSourceStream.
TESSARIN_API int32_t CreatePCMDataSourceStream(tessarin::IPCMDataSource* source,
                                               tessarin::IPCMDataSourceStream** out);

/// Frees a stream; null is allowed. Returns 0.
TESSARIN_API int32_t DestroyPCMDataSourceStream(tessarin::IPCMDataSourceStream* stream);
