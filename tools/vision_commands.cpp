// SPDX-License-Identifier: MIT
// vexo calib ... and vexo pattern ...: camera calibration from a chessboard
// picture and pattern teaching/finding.  Pictures are read by OpenCV after
// the tool has checked the file and the picture's size itself.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#include <opencv2/calib3d.hpp>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/imgcodecs.hpp>

#include "commands.hpp"

namespace tool {
namespace {

using nlohmann::json;

constexpr size_t kMaxPictureFile = size_t{256} << 20;
#ifdef VEXO_VISION_MAX_PIXELS
constexpr uint64_t kMaxPixels = VEXO_VISION_MAX_PIXELS;
#else
constexpr uint64_t kMaxPixels = uint64_t{1} << 24;
#endif
constexpr size_t kMaxKeypoints = 1u << 20;

// An ImageBlock with its pixels, as a host would hold it.
struct Block {
    std::vector<uint8_t> bytes;
    int width = 0, height = 0;
    ImageBlock *get() { return reinterpret_cast<ImageBlock *>(bytes.data()); }
};

void put_be32(uint8_t *p, uint32_t v) {
    p[0] = uint8_t(v >> 24), p[1] = uint8_t(v >> 16), p[2] = uint8_t(v >> 8), p[3] = uint8_t(v);
}

uint32_t be32(const uint8_t *p) {
    return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3];
}

// Width and height from a PNG, JPEG or BMP header, so that a picture too
// large to handle is refused before it is decoded.
bool picture_size(const std::vector<uint8_t> &b, uint64_t *w, uint64_t *h) {
    static const uint8_t png[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (b.size() >= 24 && std::memcmp(b.data(), png, 8) == 0) {
        *w = be32(&b[16]), *h = be32(&b[20]);
        return true;
    }
    if (b.size() >= 26 && b[0] == 'B' && b[1] == 'M') {
        int32_t bw, bh;
        std::memcpy(&bw, &b[18], 4), std::memcpy(&bh, &b[22], 4);
        *w = uint64_t(std::llabs(bw)), *h = uint64_t(std::llabs(bh));
        return true;
    }
    if (b.size() >= 4 && b[0] == 0xFF && b[1] == 0xD8) {
        for (size_t i = 2; i + 9 < b.size();) {
            if (b[i] != 0xFF) return false;
            const uint8_t m = b[i + 1];
            const size_t len = size_t(b[i + 2]) << 8 | b[i + 3];
            const bool sof = m >= 0xC0 && m <= 0xCF && m != 0xC4 && m != 0xC8 && m != 0xCC;
            if (sof) {
                *h = size_t(b[i + 5]) << 8 | b[i + 6];
                *w = size_t(b[i + 7]) << 8 | b[i + 8];
                return true;
            }
            i += 2 + len;
        }
    }
    return false;
}

Block read_picture(const std::string &path) {
    const std::vector<uint8_t> bytes = cli::read_input(path, kMaxPictureFile);
    uint64_t w = 0, h = 0;
    if (!picture_size(bytes, &w, &h)) throw cli::Failure(path + ": not a PNG, JPEG or BMP picture");
    if (w == 0 || h == 0 || w * h > kMaxPixels)
        throw cli::Failure(path + ": " + std::to_string(w) + " x " + std::to_string(h) +
                           " pixels; the limit is " + std::to_string(kMaxPixels) + " pixels");
    cv::Mat img;
    try {
        img = cv::imdecode(bytes, cv::IMREAD_COLOR);
    } catch (const cv::Exception &) {
        img.release();
    }
    if (img.empty()) throw cli::Failure(path + ": the picture cannot be decoded");
    Block b{std::vector<uint8_t>(32 + size_t(img.cols) * size_t(img.rows) * 3), img.cols, img.rows};
    b.bytes[8] = VEXO_IMAGE_KIND;
    b.bytes[9] = IMAGE_FORMAT_RGB24;
    put_be32(&b.bytes[16], uint32_t(img.cols));
    put_be32(&b.bytes[20], uint32_t(img.rows));
    const uint32_t bits = 24, size = uint32_t(b.bytes.size() - 32);
    std::memcpy(&b.bytes[24], &bits, 4);
    std::memcpy(&b.bytes[28], &size, 4);
    for (int r = 0; r < img.rows; ++r)
        std::memcpy(&b.bytes[32 + size_t(r) * size_t(img.cols) * 3], img.ptr(r),
                    size_t(img.cols) * 3);
    return b;
}

// ---------------------------------------------------------------- records

struct Intrinsics {
    double camera[9], distortion[4], perspective[9];
    int width, height, options;
};

Intrinsics decode(const CalibrationRecord &rec) {
    Intrinsics in{};
    for (int i = 0; i < 9; ++i) in.camera[i] = vexo_util_block_to_dbl(rec.camera[i]);
    for (int i = 0; i < 4; ++i) in.distortion[i] = vexo_util_block_to_dbl(rec.distortion[i]);
    for (int i = 0; i < 9; ++i) in.perspective[i] = vexo_util_block_to_dbl(rec.perspective[i]);
    in.width = rec.width, in.height = rec.height, in.options = rec.options;
    return in;
}

// What makes a record unusable, or "".
std::string record_problem(const Intrinsics &in) {
    for (double v : in.camera)
        if (!std::isfinite(v)) return "camera matrix holds a value that is not finite";
    for (double v : in.distortion)
        if (!std::isfinite(v)) return "distortion holds a value that is not finite";
    for (double v : in.perspective)
        if (!std::isfinite(v)) return "perspective holds a value that is not finite";
    if (in.width < 1 || in.width > 8192 || in.height < 1 || in.height > 8192)
        return "size " + std::to_string(in.width) + " x " + std::to_string(in.height) +
               " is outside 1..8192";
    const double *k = in.camera;
    if (!(k[0] > 0 && k[4] > 0) || k[3] != 0 || k[6] != 0 || k[7] != 0 || k[8] != 1)
        return "not a camera matrix (fx, fy > 0, [0 0 1] as last row)";
    if (in.options & ~int(CALIB_OPTION_TOP_DOWN))
        return "unknown option bits " + std::to_string(in.options);
    return "";
}

CalibrationRecord read_record(const std::string &path) {
    const std::vector<uint8_t> bytes = cli::read_input(path, 1 << 16);
    if (bytes.size() != sizeof(CalibrationRecord))
        throw cli::Failure(path + ": not a calibration record (" + std::to_string(bytes.size()) +
                           " bytes where a record has " +
                           std::to_string(sizeof(CalibrationRecord)) + ")");
    CalibrationRecord rec;
    std::memcpy(&rec, bytes.data(), sizeof rec);
    const std::string problem = record_problem(decode(rec));
    if (!problem.empty())
        throw cli::Failure(path + ": not a usable calibration record: " + problem);
    return rec;
}

// RMS distance in pixels between the found corners and the board's corners
// projected through the record's camera (pose fitted to the corners), with
// the board model the calibration itself uses.
double reprojection_error(const int32_t *corners, int cols, int rows, const Intrinsics &in) {
    std::vector<cv::Point3f> board;
    std::vector<cv::Point2f> found;
    // The board model the calibration fits: corner i at (i / cols as a real
    // quotient, i mod cols, 0).
    for (int i = 0; i < rows * cols; ++i) {
        board.emplace_back(float(double(i) / cols), float(i % cols), 0.f);
        found.emplace_back(float(corners[2 * i]), float(corners[2 * i + 1]));
    }
    const cv::Mat k(3, 3, CV_64F, const_cast<double *>(in.camera));
    const cv::Mat d(1, 4, CV_64F, const_cast<double *>(in.distortion));
    cv::Mat rvec, tvec;
    std::vector<cv::Point2f> projected;
    try {
        if (!cv::solvePnP(board, found, k, d, rvec, tvec)) return NAN;
        cv::projectPoints(board, rvec, tvec, k, d, projected);
    } catch (const cv::Exception &) {
        return NAN;
    }
    double sum = 0;
    for (size_t i = 0; i < found.size(); ++i) {
        const double dx = projected[i].x - found[i].x, dy = projected[i].y - found[i].y;
        sum += dx * dx + dy * dy;
    }
    return std::sqrt(sum / double(found.size()));
}

json intrinsics_json(const Intrinsics &in) {
    bool has_perspective = false;
    for (double v : in.perspective) has_perspective = has_perspective || v != 0;
    return {{"width", in.width},
            {"height", in.height},
            {"camera", std::vector<double>(in.camera, in.camera + 9)},
            {"fx", in.camera[0]},
            {"fy", in.camera[4]},
            {"cx", in.camera[2]},
            {"cy", in.camera[5]},
            {"distortion",
             {{"k1", in.distortion[0]},
              {"k2", in.distortion[1]},
              {"p1", in.distortion[2]},
              {"p2", in.distortion[3]}}},
            {"perspective", has_perspective
                                ? json(std::vector<double>(in.perspective, in.perspective + 9))
                                : json(nullptr)},
            {"top_down", (in.options & CALIB_OPTION_TOP_DOWN) != 0}};
}

void print_intrinsics(const Intrinsics &in) {
    std::printf("size:         %d x %d pixels\n", in.width, in.height);
    std::printf("camera:       fx %.4f  fy %.4f  cx %.4f  cy %.4f (pixels)\n", in.camera[0],
                in.camera[4], in.camera[2], in.camera[5]);
    for (int r = 0; r < 3; ++r)
        std::printf("              [%12.4f %12.4f %12.4f]\n", in.camera[3 * r],
                    in.camera[3 * r + 1], in.camera[3 * r + 2]);
    std::printf("distortion:   k1 %.6f  k2 %.6f  p1 %.6f  p2 %.6f\n", in.distortion[0],
                in.distortion[1], in.distortion[2], in.distortion[3]);
    bool has_perspective = false;
    for (double v : in.perspective) has_perspective = has_perspective || v != 0;
    if (!has_perspective) std::printf("perspective:  none\n");
    for (int r = 0; has_perspective && r < 3; ++r)
        std::printf("%s[%12.6f %12.6f %12.6f]\n",
                    r ? "              " : "perspective:  ", in.perspective[3 * r],
                    in.perspective[3 * r + 1], in.perspective[3 * r + 2]);
    std::printf("rows:         %s\n",
                (in.options & CALIB_OPTION_TOP_DOWN) ? "top down" : "flipped (bottom up)");
}

struct Corners {
    int32_t *list = nullptr;
    ~Corners() { vexo_calib_release_correction(list); }
};

// ---------------------------------------------------------------- calib

struct BoardOptions {
    std::string image, out;
    int cols = 0, rows = 0;
    bool json = false, corners = false;
};

void add_board(CLI::App *group) {
    auto o = std::make_shared<BoardOptions>();
    CLI::App *cmd = group->add_subcommand(
        "board", "Calibrate from a chessboard picture: write the record, print the camera "
                 "matrix, distortion and reprojection error (pixels)");
    cmd->add_option("IMAGE", o->image, "PNG, JPEG or BMP picture of the board")->required();
    cmd->add_option("COLS", o->cols, "inner corners across, 3..1024")
        ->required()
        ->check(CLI::Range(3, 1024));
    cmd->add_option("ROWS", o->rows, "inner corners down, 3..1024")
        ->required()
        ->check(CLI::Range(3, 1024));
    cmd->add_option("OUT", o->out, "calibration record to write (216 bytes), - for stdout")
        ->required();
    cmd->add_flag("--corners", o->corners, "also print every corner (pixels)");
    add_json_flag(cmd, o->json);
    cmd->callback([o] {
        Block b = read_picture(o->image);
        CalibrationRecord rec;
        std::memset(&rec, 0, sizeof rec);
        int32_t found = 0;
        Corners c;
        c.list = vexo_calib_gen_correction(b.get(), o->cols, o->rows, &rec, &found);
        if (!c.list)
            throw cli::Failure(o->image + ": chessboard of " + std::to_string(o->cols) + " x " +
                               std::to_string(o->rows) + " inner corners not found (" +
                               std::to_string(found) + " corners found)");
        const Intrinsics in = decode(rec);
        const double error = reprojection_error(c.list, o->cols, o->rows, in);
        cli::write_output(o->out, [&](const std::string &tmp) {
            std::FILE *f = std::fopen(tmp.c_str(), "wb");
            const bool ok = f && std::fwrite(&rec, sizeof rec, 1, f) == 1;
            if (!f || std::fclose(f) != 0 || !ok)
                throw cli::Failure(o->out + ": cannot write the record");
        });
        if (o->out == "-") return;
        if (o->json) {
            json j = intrinsics_json(in);
            j["image"] = o->image;
            j["corners_found"] = found;
            j["reprojection_error_px"] = error;
            j["record"] = o->out;
            if (o->corners) {
                std::vector<std::vector<int32_t>> list;
                for (int i = 0; i < found; ++i) list.push_back({c.list[2 * i], c.list[2 * i + 1]});
                j["corners"] = list;
            }
            print_json(j.dump(2));
            return;
        }
        std::printf("corners:      %d found in %s\n", found, o->image.c_str());
        print_intrinsics(in);
        std::printf("reprojection: %.4f pixels RMS (corners rounded to whole pixels)\n", error);
        if (o->corners)
            for (int i = 0; i < found; ++i)
                std::printf("  %3d: %d, %d\n", i, c.list[2 * i], c.list[2 * i + 1]);
        cli::say("calibration record written to %s\n", o->out.c_str());
    });
}

struct RecordOptions {
    std::string rec, image, out;
    std::vector<int> board;
    bool json = false;
};

void add_info(CLI::App *group) {
    auto o = std::make_shared<RecordOptions>();
    CLI::App *cmd = group->add_subcommand(
        "info", "Show a calibration record: size, camera matrix, distortion, perspective; with "
                "--board, the reprojection error on a chessboard picture");
    cmd->add_option("REC", o->rec, "calibration record (216 bytes)")->required();
    cmd->add_option("--image", o->image, "chessboard picture for the reprojection error");
    cmd->add_option("--board", o->board, "COLS ROWS inner corners of that picture")->expected(2);
    add_json_flag(cmd, o->json);
    cmd->callback([o] {
        const Intrinsics in = decode(read_record(o->rec));
        double error = NAN;
        if (!o->image.empty()) {
            if (o->board.size() != 2) throw cli::Usage("--image needs --board COLS ROWS");
            Block b = read_picture(o->image);
            CalibrationRecord scratch;
            int32_t found = 0;
            Corners c;
            c.list = vexo_calib_gen_correction(b.get(), o->board[0], o->board[1], &scratch, &found);
            if (!c.list) throw cli::Failure(o->image + ": chessboard not found");
            error = reprojection_error(c.list, o->board[0], o->board[1], in);
        }
        if (o->json) {
            json j = intrinsics_json(in);
            j["record"] = o->rec;
            j["reprojection_error_px"] = std::isnan(error) ? json(nullptr) : json(error);
            print_json(j.dump(2));
            return;
        }
        print_intrinsics(in);
        if (std::isnan(error))
            std::printf("reprojection: not stored in a record (give --image and --board)\n");
        else
            std::printf("reprojection: %.4f pixels RMS on %s\n", error, o->image.c_str());
    });
}

void add_apply(CLI::App *group) {
    auto o = std::make_shared<RecordOptions>();
    CLI::App *cmd = group->add_subcommand("apply", "Rectify a picture with a calibration record");
    cmd->add_option("REC", o->rec, "calibration record (216 bytes)")->required();
    cmd->add_option("IMAGE", o->image, "picture to rectify")->required();
    cmd->add_option("OUT", o->out, "grey picture to write (.png)")->required();
    cmd->callback([o] {
        if (cli::final_extension(o->out) != "png")
            throw cli::Usage(o->out + ": the picture must be named .png");
        const CalibrationRecord rec = read_record(o->rec);
        std::unique_ptr<Calibrator, void (*)(Calibrator *)> cal(vexo_calib_create_calibrator(&rec),
                                                                vexo_calib_release_calibrator);
        if (!cal) throw cli::Failure(o->rec + ": cannot create a calibrator: out of memory");
        Block b = read_picture(o->image);
        const int32_t status = vexo_calib_start_calibrator(cal.get(), b.get());
        if (status != int32_t(VEXO_OK))
            throw cli::Failure(o->image +
                               ": cannot rectify: " + cli::status_text(uint32_t(status)));
        const int w = std::min(std::clamp(rec.width, 80, 8192), b.width);
        const int h = std::min(std::clamp(rec.height, 60, 8192), b.height);
        const cv::Mat grey(h, w, CV_8UC1, b.bytes.data() + 32);
        cli::write_output(o->out, [&](const std::string &tmp) {
            bool ok = false;
            try {
                ok = cv::imwrite(tmp + ".png", grey) &&
                     std::rename((tmp + ".png").c_str(), tmp.c_str()) == 0;
            } catch (const cv::Exception &) {
            }
            std::remove((tmp + ".png").c_str());
            if (!ok) throw cli::Failure(o->out + ": cannot write the picture");
        });
        cli::say("rectified %dx%d picture written to %s\n", w, h, o->out.c_str());
    });
}

// ---------------------------------------------------------------- pattern

const char kKeypointMagic[4] = {'V', 'X', 'K', 'P'};

struct KeypointFile {
    uint32_t options = 0;
    std::vector<PatternKeypoint> keypoints;
};

KeypointFile read_keypoints(const std::string &path) {
    const size_t record = sizeof(PatternKeypoint);
    const std::vector<uint8_t> bytes = cli::read_input(path, 12 + kMaxKeypoints * record);
    if (bytes.size() < 12 || std::memcmp(bytes.data(), kKeypointMagic, 4) != 0)
        throw cli::Failure(path + ": not a keypoint file (no \"VXKP\" label)");
    KeypointFile k;
    int32_t count = 0;
    std::memcpy(&k.options, &bytes[4], 4);
    std::memcpy(&count, &bytes[8], 4);
    if (count < 3)
        throw cli::Failure(path + ": holds " + std::to_string(count) +
                           " keypoints; a recogniser needs at least 3");
    if (bytes.size() != 12 + size_t(count) * record)
        throw cli::Failure(path + ": damaged: " + std::to_string(bytes.size()) + " bytes for " +
                           std::to_string(count) + " keypoints (expected " +
                           std::to_string(12 + size_t(count) * record) + ")");
    k.keypoints.resize(size_t(count));
    std::memcpy(k.keypoints.data(), &bytes[12], k.keypoints.size() * record);
    return k;
}

void write_keypoints(const std::string &path, uint32_t options, const PatternKeypoint *kp,
                     int32_t count) {
    cli::write_output(path, [&](const std::string &tmp) {
        std::FILE *f = std::fopen(tmp.c_str(), "wb");
        bool ok = f && std::fwrite(kKeypointMagic, 4, 1, f) == 1 &&
                  std::fwrite(&options, 4, 1, f) == 1 && std::fwrite(&count, 4, 1, f) == 1 &&
                  std::fwrite(kp, sizeof *kp, size_t(count), f) == size_t(count);
        if (f) ok = std::fclose(f) == 0 && ok;
        if (!ok) throw cli::Failure(path + ": cannot write the keypoints");
    });
}

struct TeachOptions {
    std::string image, out, detector;
    int box[4] = {0, 0, 0, 0};
};

void add_teach(CLI::App *group) {
    auto o = std::make_shared<TeachOptions>();
    CLI::App *cmd = group->add_subcommand(
        "teach", "Teach the pattern inside a rectangle of a picture as keypoints");
    cmd->add_option("IMAGE", o->image, "PNG, JPEG or BMP picture")->required();
    const char *sides[4] = {"LEFT", "TOP", "RIGHT", "BOTTOM"};
    for (int i = 0; i < 4; ++i)
        cmd->add_option(sides[i], o->box[i], "rectangle side in pixels")->required();
    cmd->add_option("OUT", o->out, "keypoint file to write")->required();
    cmd->add_option("--detector", o->detector, "sift, surf or orb (default: the one finding most)")
        ->check(CLI::IsMember({"sift", "surf", "orb"}));
    cmd->callback([o] {
        uint32_t options = RECOGNISER_POSITION | RECOGNISER_ROTATION;
        if (o->detector == "sift") options |= RECOGNISER_SIFT;
        if (o->detector == "surf") options |= RECOGNISER_SURF;
        if (o->detector == "orb") options |= RECOGNISER_ORB;
        Block b = read_picture(o->image);
        int32_t count = 0;
        std::unique_ptr<PatternKeypoint, void (*)(PatternKeypoint *)> kp(
            vexo_prcg_gen_keypoints(b.get(), &count, &options, o->box[0], o->box[1], o->box[2],
                                    o->box[3]),
            vexo_prcg_release_keypoints);
        if (!kp || count < 3)
            throw cli::Failure(o->image + ": " + std::to_string(std::max(count, 0)) +
                               " keypoints inside the rectangle; at least 3 are needed");
        write_keypoints(o->out, options, kp.get(), count);
        const char *name = (options & RECOGNISER_SIFT)   ? "SIFT"
                           : (options & RECOGNISER_SURF) ? "SURF"
                                                         : "ORB";
        cli::say("%d %s keypoints written to %s\n", count, name, o->out.c_str());
    });
}

struct FindOptions {
    std::string keypoints, reference, image;
    bool flann = false, robust = false, json = false;
};

void add_find(CLI::App *group) {
    auto o = std::make_shared<FindOptions>();
    CLI::App *cmd = group->add_subcommand(
        "find", "Find a taught pattern in a picture: position (pixels), rotation (degrees)"
#ifdef VEXO_RECOGNISER_ROBUST
                ", scale, matches and inliers"
#endif
    );
    cmd->add_option("KEYPOINTS", o->keypoints, "keypoint file from vexo pattern teach")->required();
    cmd->add_option("REF", o->reference, "the picture the pattern was taught on")->required();
    cmd->add_option("IMAGE", o->image, "picture to search")->required();
    cmd->add_flag("--flann", o->flann, "match with FLANN instead of brute force");
#ifdef VEXO_RECOGNISER_ROBUST
    cmd->add_flag("--robust", o->robust, "fit the homography robustly (outliers left out)");
#endif
    add_json_flag(cmd, o->json);
    cmd->callback([o] {
        KeypointFile k = read_keypoints(o->keypoints);
        const uint32_t options = (k.options & ~RECOGNISER_MATCHER_MASK) |
                                 (o->flann ? RECOGNISER_FLANN : 0u) | RECOGNISER_POSITION |
                                 RECOGNISER_ROTATION;
        Block reference = read_picture(o->reference);
        std::unique_ptr<Recogniser, void (*)(Recogniser *)> rec(
            vexo_prcg_create_recogniser(k.keypoints.data(), int32_t(k.keypoints.size()), options,
                                        reference.get(), 0, 0),
            vexo_prcg_release_recogniser);
        if (!rec)
            throw cli::Failure(o->keypoints + ": no recogniser from these keypoints on " +
                               o->reference + " (keypoints outside the picture or unusable)");
        Block frame = read_picture(o->image);
        json j = {{"image", o->image}};
#ifdef VEXO_RECOGNISER_ROBUST
        RecognitionReport report{};
        const uint32_t status = vexo_prcg_start_recogniser2(
            rec.get(), frame.get(), o->robust ? VEXO_RECOGNISER_ROBUST : 0u, &report);
        j["matches"] = report.matches;
        j["inliers"] = report.inliers;
        j["scale"] = report.scale;
        const double x = report.x, y = report.y, rotation = report.rotation;
#else
        RecognitionResult result{};
        vexo_prcg_start_recogniser(rec.get(), frame.get(), &result);
        const uint32_t status = uint32_t(result.status);
        const double x = result.x, y = result.y, rotation = result.rotation;
#endif
        std::string reached;
#ifdef VEXO_RECOGNISER_ROBUST
        reached = " (" + std::to_string(report.matches) + " matches, " +
                  std::to_string(report.inliers) + " inliers)";
#endif
        if (status != VEXO_OK)
            throw cli::Failure(o->image + ": pattern not found: " + cli::status_text(status) +
                               reached);
        j["x"] = x, j["y"] = y, j["rotation"] = rotation;
        if (o->json) {
            print_json(j.dump(2));
            return;
        }
        std::printf("x %.2f  y %.2f  rotation %.2f", x, y, rotation);
#ifdef VEXO_RECOGNISER_ROBUST
        std::printf("  scale %.4f  matches %u  inliers %u", report.scale, report.matches,
                    report.inliers);
#endif
        std::printf("\n");
    });
}

void quiet_opencv() {
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
}

} // namespace

std::vector<uint8_t> read_picture_block(const std::string &path) {
    return read_picture(path).bytes;
}

CalibrationRecord read_calibration_record(const std::string &path) {
    return read_record(path);
}

void add_calib_group(CLI::App &root) {
    quiet_opencv();
    CLI::App *group = add_group(root, "calib", "camera calibration");
    add_board(group);
    add_info(group);
    add_apply(group);
}

void add_pattern_group(CLI::App &root) {
    quiet_opencv();
    CLI::App *group = add_group(root, "pattern", "pattern recognition");
    add_teach(group);
    add_find(group);
}

} // namespace tool
