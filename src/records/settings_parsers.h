// Readers of the settings texts kept in the database: PARAM_INFO.PARAM_SETTINGS,
// PARAM_INFO.TU_ERROR in its JSON form, fu_raw.settings, VISUALIZATION.MESSAGE_SETTINGS and
// VEK_CALCULATION.settings. They report a document they cannot read on standard output, not
// in the log, and go on with what they have.
//
// The JSON readers work on bytes: each byte is widened as a signed value, so a byte of 0x80
// or above (a UTF-8 Cyrillic letter) inside a string makes the whole document unreadable.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "records/types.h"

// The array of flat objects of PARAM_SETTINGS, read by position the way the modules' tools
// write it: "name_param": "<name>", "sub_1_packet": "<text>", "value": <number or null>, each
// with one blank after the colon. One setting per object, in order; a missing name stays
// empty. A text shorter than 2 characters gives no settings.
// Throws std::invalid_argument or std::out_of_range (from the number conversion or a
// substring) for an object without "value", a value that is not a number or lies beyond
// double, and text after the last "}" longer than one character.
std::vector<param_setting> parse_param_settings(std::string text);

// An array of objects with "name_param" (string) and "value" (number), as in fu_raw.settings
// and the JSON form of TU_ERROR: name to value. Elements without a non-empty name or without
// a numeric value are dropped; a later duplicate wins. Not JSON: the empty map and
// "failed to parse settings raw\n" on standard output.
std::map<std::string, double> json_parse_settings_raw(std::string text);

// MESSAGE_SETTINGS: under the key situation ("corridorActive", "rulActive"), an array of
// objects {"codeMessage": code, "recommendations": [ids]}; gives code to recommendation ids
// in order. Elements without a string code are skipped, ids that are not numbers (or do not
// fit in int) are skipped; a later element with the same code replaces the earlier one. A
// missing situation gives the empty map. Not JSON: the empty map and
// "failed to parse message settings\n" on standard output.
std::map<std::string, std::vector<int>> json_parse_message_settings(std::string text,
                                                                    std::string situation);

// The service's settings object: numbers go to numbers as one-element vectors, arrays to
// numbers with their numeric elements, all truncated toward zero; strings to texts, booleans
// to flags; null and objects are ignored, and so is a number that does not fit in long. A key
// of the document replaces that key in its map; other entries stay. Not a JSON object: the maps
// stay untouched and "failed to parse vek settings\n" goes to standard output.
void json_parse_vek_settings(std::string text, std::map<std::string, std::vector<long>>& numbers,
                             std::map<std::string, std::string>& texts,
                             std::map<std::string, bool>& flags);
