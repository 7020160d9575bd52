#include "support/Dates.h"

#include <cmath>
#include <cstdio>
#include <ctime>
#include <mutex>

namespace velmora::support {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The digits of text[at, at + count), or -1 when one is not a digit.
int digits(std::string_view text, std::size_t at, std::size_t count) {
    if (at + count > text.size()) return -1;
    int value = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        if (!isDigit(text[i])) return -1;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

bool isLeap(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int daysInMonth(int year, int month) {
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeap(year) ? 29 : days[month - 1];
}

struct Fields {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

// "yyyy-MM-ddTHH:mm:ss" at the start of `text`, fields in range.
std::optional<Fields> readFields(std::string_view text) {
    if (text.size() < 19 || text[4] != '-' || text[7] != '-' || text[10] != 'T' || text[13] != ':' || text[16] != ':') {
        return std::nullopt;
    }
    Fields f{digits(text, 0, 4), digits(text, 5, 2), digits(text, 8, 2),
             digits(text, 11, 2), digits(text, 14, 2), digits(text, 17, 2)};
    if (f.year < 1 || f.month < 1 || f.month > 12 || f.day < 1 || f.day > daysInMonth(f.year, f.month) || f.hour < 0 ||
        f.hour > 23 || f.minute < 0 || f.minute > 59 || f.second < 0 || f.second > 59) {
        return std::nullopt;
    }
    return f;
}

// Days from 1970-01-01 to a civil date (proleptic Gregorian).
long long daysFromCivil(long long year, unsigned month, unsigned day) {
    year -= month <= 2;
    const long long era = (year >= 0 ? year : year - 399) / 400;
    const auto yearOfEra = static_cast<unsigned>(year - era * 400);
    const unsigned dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + static_cast<long long>(dayOfEra) - 719468;
}

// The C library's zone state is shared and guarded by a lock of its own
// that race detectors cannot see; one lock of ours orders the calls.
std::mutex& zoneLock() {
    static auto* lock = new std::mutex;
    return *lock;
}

std::tm localFields(Date date) {
    const auto seconds = static_cast<std::time_t>(std::floor(date));
    std::tm fields{};
    std::lock_guard guard(zoneLock());
    localtime_r(&seconds, &fields);
    return fields;
}

// Local wall-clock fields to a moment; a time that the zone skips moves on
// by the gap, as the calendar does.
Date fromLocal(int year, int month, int day, int hour, int minute, int second) {
    std::tm fields{};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    fields.tm_isdst = -1;
    std::lock_guard guard(zoneLock());
    return static_cast<Date>(std::mktime(&fields));
}

}  // namespace

std::optional<Date> parseLocalTimestamp(std::string_view text) {
    if (text.size() != 19) return std::nullopt;
    const auto f = readFields(text);
    if (!f) return std::nullopt;
    return fromLocal(f->year, f->month, f->day, f->hour, f->minute, f->second);
}

std::string formatLocalTimestamp(Date date) {
    const std::tm f = localFields(date);
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02dT%02d:%02d:%02d", f.tm_year + 1900, f.tm_mon + 1, f.tm_mday,
                  f.tm_hour, f.tm_min, f.tm_sec);
    return buffer;
}

std::optional<Date> parseInternetDateTime(std::string_view text) {
    const auto f = readFields(text);
    if (!f || text.size() < 21 || text[19] != '.') return std::nullopt;
    std::size_t at = 20;
    double fraction = 0, scale = 0.1;
    while (at < text.size() && isDigit(text[at])) {
        fraction += (text[at] - '0') * scale;
        scale /= 10;
        ++at;
    }
    if (at == 20) return std::nullopt;
    int offset = 0;
    const std::string_view zone = text.substr(at);
    if (zone == "Z") {
        offset = 0;
    } else if (zone.size() == 6 && (zone[0] == '+' || zone[0] == '-') && zone[3] == ':') {
        const int hours = digits(zone, 1, 2), minutes = digits(zone, 4, 2);
        if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59) return std::nullopt;
        offset = (zone[0] == '-' ? -1 : 1) * (hours * 3600 + minutes * 60);
    } else {
        return std::nullopt;
    }
    const long long days = daysFromCivil(f->year, static_cast<unsigned>(f->month), static_cast<unsigned>(f->day));
    return static_cast<Date>(days * 86400 + f->hour * 3600 + f->minute * 60 + f->second - offset) + fraction;
}

Date startOfDay(Date date) {
    const std::tm f = localFields(date);
    return fromLocal(f.tm_year + 1900, f.tm_mon + 1, f.tm_mday, 0, 0, 0);
}

Date endOfDay(Date date) {
    const std::tm f = localFields(date);
    return fromLocal(f.tm_year + 1900, f.tm_mon + 1, f.tm_mday, 23, 59, 59);
}

std::string dayText(Date date) { return formatLocalTimestamp(date).substr(0, 10); }

std::optional<Date> dateOnDay(std::string_view day, Date timeOf) {
    if (day.size() != 10) return std::nullopt;
    const std::tm time = localFields(timeOf);
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "T%02d:%02d:%02d", time.tm_hour, time.tm_min, time.tm_sec);
    return parseLocalTimestamp(std::string(day) + buffer);
}

std::string mediumDateText(Date date) {
    static const char* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                         "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::tm f = localFields(date);
    return std::string(months[f.tm_mon]) + " " + std::to_string(f.tm_mday) + ", " + std::to_string(f.tm_year + 1900);
}

}  // namespace velmora::support
