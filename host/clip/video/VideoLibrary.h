#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>

/// Owners of the video library's objects, and its messages.

struct SInputCloser {
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct SOutputCloser {
  void operator()(AVFormatContext* context) const {
    if (context->pb != nullptr) avio_closep(&context->pb);
    avformat_free_context(context);
  }
};
struct SCodecCloser {
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct SFrameCloser {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct SPacketCloser {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct SScalerCloser {
  void operator()(SwsContext* context) const { sws_freeContext(context); }
};
using InputFile = std::unique_ptr<AVFormatContext, SInputCloser>;
using OutputFile = std::unique_ptr<AVFormatContext, SOutputCloser>;
using Codec = std::unique_ptr<AVCodecContext, SCodecCloser>;
using Picture = std::unique_ptr<AVFrame, SFrameCloser>;
using Packet = std::unique_ptr<AVPacket, SPacketCloser>;
using Scaler = std::unique_ptr<SwsContext, SScalerCloser>;

Picture MakePicture();
Packet MakePacket();

/// From now on the library's messages go to the trace (level 3) instead of the terminal.
void TraceVideoLibrary();
/// Opens a file and finds its streams. Throws CClipError.
InputFile OpenInput(const std::string& path);
/// "<path>: <what><the library's text for the code>" as a CClipError.
[[noreturn]] void ThrowVideoError(const std::string& path, const std::string& what, int code);
/// A metadata text of stream or file; empty when there is none.
std::string MetadataText(const AVDictionary* dictionary, const char* key);
