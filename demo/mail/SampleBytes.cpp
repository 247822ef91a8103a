#include "demo/mail/SampleBytes.h"

#include "platform/linux/glib/Ref.h"

#include <fmt/core.h>
#include <gio/gio.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace ondrel::demo::mail {

namespace {

std::uint32_t checksum(std::string_view bytes) {
  std::uint32_t crc = ~0U;
  for (const unsigned char byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit)
      crc = (crc >> 1) ^ (crc & 1 ? 0xEDB88320U : 0);
  }
  return ~crc;
}

std::string little(std::uint32_t number, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i)
    text += static_cast<char>(number >> (8 * i));
  return text;
}

std::string big(std::uint32_t number) {
  const auto text = little(number, 4);
  return {text.rbegin(), text.rend()};
}

std::string deflated(const std::string& bytes) {
  const auto compressor = glib::adopt(G_CONVERTER(g_zlib_compressor_new(G_ZLIB_COMPRESSOR_FORMAT_ZLIB, 6)));
  std::string result(bytes.size() + 1024, '\0');
  gsize read = 0;
  gsize written = 0;
  g_converter_convert(compressor.get(), bytes.data(), bytes.size(), result.data(), result.size(),
                      G_CONVERTER_INPUT_AT_END, &read, &written, nullptr);
  result.resize(written);
  return result;
}

std::string chunk(const std::string& typeAndData) {
  return big(static_cast<std::uint32_t>(typeAndData.size() - 4)) + typeAndData + big(checksum(typeAndData));
}

std::string headerChunk(unsigned width, unsigned height) {
  constexpr std::string_view rgbOf8Bits("\x08\x02\0\0\0", 5);
  return chunk("IHDR" + big(width) + big(height) + std::string(rgbOf8Bits));
}

constexpr std::string_view pngSignature = "\x89PNG\r\n\x1A\n";

} // namespace

std::string pngOf(unsigned width, unsigned height, unsigned seed) {
  std::string rows;
  for (unsigned y = 0; y < height; ++y) {
    rows += '\0'; // no filter
    for (unsigned x = 0; x < width; ++x) {
      const unsigned stripe = (x + y) / 24 + seed;
      for (const unsigned factor : {83U, 47U, 29U})
        rows += static_cast<char>(64 + stripe * factor % 160);
    }
  }
  return std::string(pngSignature) + headerChunk(width, height) + chunk("IDAT" + deflated(rows)) +
         chunk("IEND");
}

std::string withPngSize(std::string png, unsigned width, unsigned height) {
  const auto header = headerChunk(width, height);
  return png.replace(pngSignature.size(), header.size(), header);
}

std::string pdfOf(const std::string& title, unsigned pages) {
  std::vector<std::string> objects{"<< /Type /Catalog /Pages 2 0 R >>", "",
                                   "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"};
  std::string kids;
  for (unsigned page = 1; page <= pages; ++page) {
    const auto text = fmt::format("BT /F1 24 Tf 60 760 Td ({}, page {}) Tj ET", title, page);
    kids += fmt::format("{} 0 R ", objects.size() + 1);
    objects.push_back(fmt::format("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents {} 0 R "
                                  "/Resources << /Font << /F1 3 0 R >> >> >>",
                                  objects.size() + 2));
    objects.push_back(fmt::format("<< /Length {} >>\nstream\n{}\nendstream", text.size(), text));
  }
  objects[1] = fmt::format("<< /Type /Pages /Count {} /Kids [{}] >>", pages, kids);
  std::string file = "%PDF-1.4\n";
  std::string table;
  for (std::size_t i = 0; i < objects.size(); ++i) {
    table += fmt::format("{:010} 00000 n \n", file.size());
    file += fmt::format("{} 0 obj\n{}\nendobj\n", i + 1, objects[i]);
  }
  const auto size = objects.size() + 1;
  return fmt::format("{}xref\n0 {}\n0000000000 65535 f \n{}trailer\n<< /Size {} /Root 1 0 R >>\n"
                     "startxref\n{}\n%%EOF\n",
                     file, size, table, size, file.size());
}

std::string zipOf(const std::string& name, const std::string& bytes) {
  const auto size = little(static_cast<std::uint32_t>(bytes.size()), 4);
  // Version 2.0, no flags, stored, 20 November 2025.
  const auto head = little(20, 2) + little(0, 4) + little(0, 2) + little(0x5B74, 2) +
                    little(checksum(bytes), 4) + size + size +
                    little(static_cast<std::uint32_t>(name.size()), 2) + little(0, 2);
  const auto file = "PK\x03\x04" + head + name + bytes;
  const auto entry = "PK\x01\x02" + little(20, 2) + head + std::string(14, '\0') + name;
  return file + entry + "PK\x05\x06" + little(0, 4) + little(1, 2) + little(1, 2) +
         little(static_cast<std::uint32_t>(entry.size()), 4) +
         little(static_cast<std::uint32_t>(file.size()), 4) + little(0, 2);
}

std::string wavOf(unsigned hertz) {
  constexpr unsigned rate = 8000;
  std::string samples;
  for (unsigned i = 0; i < rate; ++i)
    samples += static_cast<char>(i * hertz * 2 / rate % 2 ? 160 : 96);
  return "RIFF" + little(36 + rate, 4) + "WAVEfmt " + little(16, 4) + little(1, 2) + little(1, 2) +
         little(rate, 4) + little(rate, 4) + little(1, 2) + little(8, 2) + "data" + little(rate, 4) + samples;
}

} // namespace ondrel::demo::mail
