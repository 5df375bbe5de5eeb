/**
 * @file list.h
 * @brief A growable list of item references with a cursor.
 *
 * The list owns its array of references, never the items: it looks at them only through functions
 * of the caller, each of which gets the caller's datum as its last argument. Positions count from
 * 0. The cursor is the position of the current item; -1 stands before the first. NULL is a legal
 * item. A list holds at most 32767 items.
 *
 * Functions that give an item give a status in the same result, see #ZV_LIST_ITEM: a caller who
 * stores small integers cannot tell the items -1, -2 and -5 from it. A call that fails changes
 * nothing, the cursor included.
 *
 * A list is used by one thread at a time. Of list_sort() there is one at a time in the process.
 */
#ifndef ZVUTIL_LIST_H
#define ZVUTIL_LIST_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/** A list, to be released with list_free(). */
typedef struct LIST LIST;

/** What went wrong; 0 is success. */
enum {
    ZV_LIST_NO_ITEM = -1,    /**< The cursor cannot move on, or nothing is there or matches. */
    ZV_LIST_NO_LIST = -2,    /**< The handle is NULL. */
    ZV_LIST_NO_MEMORY = -3,  /**< The list cannot grow. */
    ZV_LIST_DUPLICATE = -4,  /**< The item is in the list already. */
    ZV_LIST_NO_POSITION = -5 /**< The position lies outside 0 to the number of items less 1. */
};

/** A status as a function that gives an item gives it. */
#define ZV_LIST_ITEM(status) ((void*)(intptr_t)(status))

/** Compares two items, or an item and a key. @return 0 when they are equal; see each use. */
typedef int (*ListCompare)(const void* a, const void* b, void* datum);
/** Releases an item that is not NULL. @return negative to stop; the item then stays listed. */
typedef int (*ListRelease)(void* item, void* datum);
/** Does something with an item that is not NULL. @return non-zero to stop. */
typedef int (*ListApply)(void* item, void* datum);
/** Copies an item, which may be NULL. @return what stands for it in the copied list. */
typedef void* (*ListCopy)(void* item, void* datum);

/**
 * @defgroup list_whole Lists as a whole
 * @{
 */

/**
 * Makes an empty list, its cursor at -1.
 * @param capacity items that fit before it must grow; 0 for 10.
 * @return the list, the caller's; NULL without memory and for capacities below 0 or above 32767.
 */
LIST* list_create(int capacity);
/** The same as list_create(). */
LIST* new_list(int capacity);

/**
 * Releases the items, the last first, and then the list.
 * @param release NULL to leave the items alone.
 * @return 0; #ZV_LIST_NO_LIST; or what @p release stopped with: then the list stays, all items in
 *         it, those already released too.
 */
int list_free(LIST* list, ListRelease release, void* datum);

/** Releases the items as list_free() does and empties the list; its capacity and cursor stay. */
int list_removeAll(LIST* list, ListRelease release, void* datum);

/** A release function for items from malloc(). @return 0. */
int freeListData(void* item, void* datum);

/**
 * Copies a list with its cursor and capacity.
 * @param copy NULL to have both lists refer to the same items.
 * @return the copy, the caller's; NULL without memory (@p copy is not called then) or list.
 */
LIST* list_copy(const LIST* list, ListCopy copy, void* datum);
/** list_copy() without a copy function. */
LIST* list_copyShallow(const LIST* list);

/** Counts the items. @return items or #ZV_LIST_NO_LIST. */
int list_size(const LIST* list);
/** Tells how many items fit before the list grows. @return items or #ZV_LIST_NO_LIST. */
int list_capacity(const LIST* list);
/** Tells the cursor. @return a position, -1 before the first; or #ZV_LIST_NO_LIST. */
int list_currentItem(const LIST* list);

/** Applies a function to every item but NULL ones, from position 0 on. @return 0;
 *  #ZV_LIST_NO_LIST; or what @p apply stopped with. */
int list_perform(const LIST* list, ListApply apply, void* datum);

/**
 * Sorts the items; the order of equal ones is left open, and the cursor keeps its number.
 * @param compare gives a negative value, 0 or a positive one, as for qsort(), and does not sort
 *                itself; NULL to compare the items as signed integers.
 * @return 0 or #ZV_LIST_NO_LIST.
 */
int list_sort(LIST* list, ListCompare compare, void* datum);
/** What list_sort() hands to qsort(): compares two slots. Of use only while a list is sorted. */
int list_qsort_compare(const void* a, const void* b);

/** Swaps two items; the cursor stays. @return 1; 0 for no list or a position without an item. */
int list_exchange(LIST* list, int i, int j);
/** @} */

/**
 * @defgroup list_add Adding items
 * @brief The cursor moves to the new item. The result is 0, #ZV_LIST_NO_LIST, or #ZV_LIST_NO_MEMORY
 * when the list cannot grow.
 * @{
 */

/** Adds an item at the end. */
int list_addItem(LIST* list, void* item);
/** The same as list_addItem(): the last item is the top of a stack, see list_pop(). */
int list_push(LIST* list, void* item);

/** Stores an item at a position, replacing the one there. Behind the end, the positions between
 *  get NULL items. @return also #ZV_LIST_NO_POSITION, below 0. */
int list_addNth(LIST* list, int position, void* item);
/** The same as list_addNth(). */
int list_setAt(LIST* list, int position, void* item);

/** Inserts an item before the one at a position; from the end on as list_addNth(). @return also
 *  #ZV_LIST_NO_POSITION, below 0. */
int list_insertNth(LIST* list, int position, void* item);
/** The same as list_insertNth(). */
int list_insertAt(LIST* list, int position, void* item);

/** Adds an item at the end unless list_isUnique() finds it. @return also #ZV_LIST_DUPLICATE. */
int list_addUnique(LIST* list, void* item, ListCompare compare, void* datum);

/**
 * Adds an item to a sorted list, behind those that are equal to it.
 * @param compare called with the new item first; it goes before the first item for which the
 *                result is exactly -1. NULL to compare the items as signed integers.
 */
int list_addSorted(LIST* list, void* item, ListCompare compare, void* datum);
/** @} */

/**
 * @defgroup list_get Reading items
 * @brief The result is the item at the new cursor, or #ZV_LIST_NO_LIST.
 * @{
 */

/** Gives the item at the cursor. @return also NULL when there is none. */
void* list_get(const LIST* list);
/** Goes to the first item. @return also NULL for an empty list. */
void* list_getFirst(LIST* list);
/** Goes to the last item. @return also NULL for an empty list. */
void* list_getLast(LIST* list);
/** Goes to the next item. @return also #ZV_LIST_NO_ITEM. */
void* list_getNext(LIST* list);
/** Goes to the item before. @return also #ZV_LIST_NO_ITEM. */
void* list_getPrev(LIST* list);
/** Goes to a position. @return also #ZV_LIST_NO_POSITION. */
void* list_getNth(LIST* list, int position);
/** The same as list_getFirst(). */
void* list_first(LIST* list);
/** The same as list_getLast(). */
void* list_last(LIST* list);
/** The same as list_getNext(). */
void* list_next(LIST* list);
/** The same as list_getPrev(). */
void* list_prev(LIST* list);
/** The same as list_getNth(). */
void* list_getAt(LIST* list, int position);
/** @} */

/**
 * @defgroup list_set Replacing items
 * @brief The result is 0 or #ZV_LIST_NO_LIST.
 * @{
 */

/** Replaces the item at the cursor. @return also #ZV_LIST_NO_ITEM. */
int list_set(LIST* list, void* item);
/** Goes to the first item, which an empty list gets, and replaces it. */
int list_setFirst(LIST* list, void* item);
/** Goes to the last item, which an empty list gets, and replaces it. */
int list_setLast(LIST* list, void* item);
/** Goes to the next item and replaces it. @return also #ZV_LIST_NO_ITEM. */
int list_setNext(LIST* list, void* item);
/** Goes to the item before and replaces it. @return also #ZV_LIST_NO_ITEM. */
int list_setPrev(LIST* list, void* item);
/** Goes to a position and replaces the item. @return also #ZV_LIST_NO_POSITION. */
int list_setNth(LIST* list, int position, void* item);
/** Goes to a position. @return also #ZV_LIST_NO_POSITION. */
int list_setIndex(LIST* list, int position);
/** @} */

/**
 * @defgroup list_remove Removing items
 * @brief The result is the removed item, the caller's again, or #ZV_LIST_NO_LIST.
 * @{
 */

/** Removes the item at a position; the cursor goes before it, so that list_getNext() gives the one
 *  that followed. @return also #ZV_LIST_NO_POSITION. */
void* list_deleteNth(LIST* list, int position);
/** The same as list_deleteNth(). */
void* list_deleteAt(LIST* list, int position);

/**
 * Removes the first item that matches, as list_deleteNth() does.
 * @param compare called with an item and @p key; 0 is a match. NULL to look for the item that is
 *                identical to @p datum, whatever @p key is.
 * @return also #ZV_LIST_NO_ITEM.
 */
void* list_deleteItem(LIST* list, const void* key, ListCompare compare, void* datum);
/** The same as list_deleteItem(). */
void* list_deleteMatching(LIST* list, const void* key, ListCompare compare, void* datum);

/** Removes the last item; the cursor goes to the one before. @return also #ZV_LIST_NO_ITEM. */
void* list_pop(LIST* list);
/** @} */

/**
 * @defgroup list_search Searching
 * @{
 */

/**
 * Goes to the first item that matches.
 * @param compare called with an item and @p key; 0 is a match. NULL to look for the item that is
 *                identical to @p key.
 * @return its position; #ZV_LIST_NO_ITEM or #ZV_LIST_NO_LIST.
 */
int list_findItem(LIST* list, const void* key, ListCompare compare, void* datum);

/** list_findItem() with no datum. @return the item; #ZV_LIST_NO_POSITION when nothing matches;
 *  #ZV_LIST_NO_LIST. */
void* list_getInstanceMatching(LIST* list, const void* key, ListCompare compare);

/**
 * Tells whether no item of a list matches a new one; the cursor stays.
 * @param compare called with @p item and an item of the list; 0 is a match. NULL for identity.
 * @return 1 or 0; 0 for no list too.
 */
int list_isUnique(const LIST* list, const void* item, ListCompare compare, void* datum);
/** @} */

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
