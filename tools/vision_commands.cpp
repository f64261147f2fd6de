// SPDX-License-Identifier: MIT
// vexo calib ... and vexo pattern ...: camera calibration from a chessboard
// picture and pattern teaching/finding, with pictures read by OpenCV.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "cli.hpp"
#include "commands.hpp"

namespace tool {

namespace {

// An ImageBlock with its pixels, as a host would hold it.
struct Block {
    std::vector<uint8_t> bytes;
    ImageBlock *get() { return reinterpret_cast<ImageBlock *>(bytes.data()); }
    int width, height;
};

void store_be32(uint8_t *p, uint32_t v) {
    p[0] = uint8_t(v >> 24), p[1] = uint8_t(v >> 16), p[2] = uint8_t(v >> 8), p[3] = uint8_t(v);
}

Block read_picture(const std::string &path) {
    cv::Mat img;
    try {
        img = cv::imread(path, cv::IMREAD_COLOR);
    } catch (const cv::Exception &) {
    }
    if (img.empty()) throw cli::Failure(path + ": cannot read the picture (PNG or JPEG expected)");
    Block b{std::vector<uint8_t>(32 + size_t(img.cols) * img.rows * 3), img.cols, img.rows};
    b.bytes[8] = VEXO_IMAGE_KIND;
    b.bytes[9] = IMAGE_FORMAT_RGB24;
    store_be32(&b.bytes[16], uint32_t(img.cols));
    store_be32(&b.bytes[20], uint32_t(img.rows));
    const uint32_t bits = 24, size = uint32_t(img.cols * img.rows * 3);
    std::memcpy(&b.bytes[24], &bits, 4);
    std::memcpy(&b.bytes[28], &size, 4);
    for (int r = 0; r < img.rows; ++r)
        std::memcpy(&b.bytes[32 + size_t(r) * img.cols * 3], img.ptr(r), size_t(img.cols) * 3);
    return b;
}

CalibrationRecord read_record(const std::string &path) {
    const std::vector<uint8_t> bytes = cli::read_file(path);
    if (bytes.size() < sizeof(CalibrationRecord))
        throw cli::Failure(path + ": not a calibration record (" + std::to_string(bytes.size()) +
                           " bytes, expected " + std::to_string(sizeof(CalibrationRecord)) + ")");
    CalibrationRecord rec;
    std::memcpy(&rec, bytes.data(), sizeof rec);
    return rec;
}

int calib_board(cli::Args &args) {
    const std::string image = args.next("IMAGE");
    const long cols = cli::to_long(args.next("COLS"), "COLS");
    const long rows = cli::to_long(args.next("ROWS"), "ROWS");
    const std::string out = args.next("OUT.rec");
    args.finish();
    if (cols < 2 || rows < 2 || cols > 100 || rows > 100)
        throw cli::Failure("COLS and ROWS count inner corners: 2..100 each");
    Block b = read_picture(image);
    CalibrationRecord rec;
    std::memset(&rec, 0, sizeof rec);
    int32_t found = 0;
    int32_t *corners =
        vexo_calib_gen_correction(b.get(), int32_t(cols), int32_t(rows), &rec, &found);
    if (!corners)
        throw cli::Failure(image + ": chessboard of " + std::to_string(cols) + "x" +
                           std::to_string(rows) + " inner corners not found (" +
                           std::to_string(found) + " corners found)");
    std::printf("%d corners found in %s\n", found, image.c_str());
    for (int i = 0; i < found; ++i)
        std::printf("  %3d: %d, %d\n", i, corners[2 * i], corners[2 * i + 1]);
    vexo_calib_release_correction(corners);
    const auto *raw = reinterpret_cast<const uint8_t *>(&rec);
    cli::write_file(out, std::vector<uint8_t>(raw, raw + sizeof rec));
    std::printf("calibration record written to %s\n", out.c_str());
    return 0;
}

int calib_apply(cli::Args &args) {
    const std::string rec_path = args.next("REC"), image = args.next("IMAGE");
    const std::string out = args.next("OUT.png");
    args.finish();
    const CalibrationRecord rec = read_record(rec_path);
    std::unique_ptr<Calibrator, void (*)(Calibrator *)> cal(vexo_calib_create_calibrator(&rec),
                                                            vexo_calib_release_calibrator);
    if (!cal) throw cli::Failure(rec_path + ": cannot create a calibrator");
    Block b = read_picture(image);
    const int32_t status = vexo_calib_start_calibrator(cal.get(), b.get());
    if (status != int32_t(VEXO_OK))
        throw cli::Failure(image + ": calibration failed: " + cli::status_name(uint32_t(status)));
    const int w = std::min(std::clamp(rec.width, 80, 8192), b.width);
    const int h = std::min(std::clamp(rec.height, 60, 8192), b.height);
    cv::Mat grey(h, w, CV_8UC1, b.bytes.data() + 32);
    if (!cv::imwrite(out, grey)) throw cli::Failure(out + ": cannot write the picture");
    std::printf("corrected %dx%d picture written to %s\n", w, h, out.c_str());
    return 0;
}

const char kKeypointMagic[4] = {'V', 'X', 'K', 'P'};

void write_keypoints(const std::string &path, uint32_t options, const PatternKeypoint *kp,
                     int32_t count) {
    std::vector<uint8_t> bytes(12 + size_t(count) * sizeof(PatternKeypoint));
    std::memcpy(bytes.data(), kKeypointMagic, 4);
    std::memcpy(&bytes[4], &options, 4);
    std::memcpy(&bytes[8], &count, 4);
    std::memcpy(&bytes[12], kp, size_t(count) * sizeof(PatternKeypoint));
    cli::write_file(path, bytes);
}

int pattern_teach(cli::Args &args) {
    const auto det = args.option("--detector");
    const std::string image = args.next("IMAGE");
    int32_t box[4];
    const char *names[4] = {"LEFT", "TOP", "RIGHT", "BOTTOM"};
    for (int i = 0; i < 4; ++i) box[i] = int32_t(cli::to_long(args.next(names[i]), names[i]));
    const std::string out = args.next("OUT.kp");
    args.finish();
    uint32_t options = RECOGNISER_POSITION | RECOGNISER_ROTATION;
    if (!det.empty()) {
        if (det[0] == "sift")
            options |= RECOGNISER_SIFT;
        else if (det[0] == "surf")
            options |= RECOGNISER_SURF;
        else if (det[0] == "orb")
            options |= RECOGNISER_ORB;
        else
            throw cli::Failure("--detector must be sift, surf or orb");
    }
    Block b = read_picture(image);
    int32_t count = 0;
    PatternKeypoint *kp =
        vexo_prcg_gen_keypoints(b.get(), &count, &options, box[0], box[1], box[2], box[3]);
    if (!kp || count < 3) {
        vexo_prcg_release_keypoints(kp);
        throw cli::Failure(image + ": too few keypoints inside the rectangle (" +
                           std::to_string(std::max(count, 0)) + ")");
    }
    write_keypoints(out, options, kp, count);
    vexo_prcg_release_keypoints(kp);
    const char *name = (options & RECOGNISER_SIFT)   ? "SIFT"
                       : (options & RECOGNISER_SURF) ? "SURF"
                                                     : "ORB";
    std::printf("%d %s keypoints written to %s\n", count, name, out.c_str());
    return 0;
}

int pattern_find(cli::Args &args) {
    const bool flann = args.flag("--flann");
    const std::string kp_path = args.next("KEYPOINTS"), ref = args.next("REF");
    const std::string image = args.next("IMAGE");
    args.finish();
    const std::vector<uint8_t> bytes = cli::read_file(kp_path);
    uint32_t options = 0;
    int32_t count = 0;
    if (bytes.size() < 12 || std::memcmp(bytes.data(), kKeypointMagic, 4) != 0)
        throw cli::Failure(kp_path + ": not a keypoint file");
    std::memcpy(&options, &bytes[4], 4);
    std::memcpy(&count, &bytes[8], 4);
    if (count < 0 || bytes.size() != 12 + size_t(count) * sizeof(PatternKeypoint))
        throw cli::Failure(kp_path + ": keypoint file is damaged");
    std::vector<PatternKeypoint> kp(static_cast<size_t>(count));
    std::memcpy(kp.data(), &bytes[12], kp.size() * sizeof(PatternKeypoint));
    options = (options & ~RECOGNISER_MATCHER_MASK) | (flann ? RECOGNISER_FLANN : 0u) |
              RECOGNISER_POSITION | RECOGNISER_ROTATION;
    Block reference = read_picture(ref);
    std::unique_ptr<Recogniser, void (*)(Recogniser *)> rec(
        vexo_prcg_create_recogniser(kp.data(), count, options, reference.get(), 0, 0),
        vexo_prcg_release_recogniser);
    if (!rec) throw cli::Failure(kp_path + ": cannot create a recogniser from these keypoints");
    Block frame = read_picture(image);
    RecognitionResult result{};
    vexo_prcg_start_recogniser(rec.get(), frame.get(), &result);
    if (result.status != int32_t(VEXO_OK))
        throw cli::Failure(image +
                           ": pattern not found: " + cli::status_name(uint32_t(result.status)));
    std::printf("x %.2f  y %.2f  rotation %.2f\n", result.x, result.y, result.rotation);
    return 0;
}

const Command kCalibCommands[] = {
    {"board", "IMAGE COLS ROWS OUT.rec",
     "Calibrates from a chessboard picture (inner corners), prints the corners.", calib_board},
    {"apply", "REC IMAGE OUT.png", "Rectifies a picture with a calibration record.", calib_apply},
};

const Command kPatternCommands[] = {
    {"teach", "IMAGE LEFT TOP RIGHT BOTTOM OUT.kp [--detector sift|surf|orb]",
     "Teaches the pattern inside the rectangle as keypoints.", pattern_teach},
    {"find", "KEYPOINTS REF IMAGE [--flann]",
     "Finds a taught pattern in a picture: prints x, y and rotation.", pattern_find},
};

} // namespace

CommandGroup calib_group() {
    return make_group("calib", "camera calibration", kCalibCommands);
}

CommandGroup pattern_group() {
    return make_group("pattern", "pattern recognition", kPatternCommands);
}

} // namespace tool
