// What is done with people who were selected, and with people and groups that are dragged, or cut, to a group.
import { type Answer, type Place, type Values, may, run } from "./api";
import { Dialog, Lines, askFor, change, changeOrSay, openDialog, sentence, toast } from "./dialogs";
import type { Selection } from "./selection";
import { counted, t } from "./texts";
import { argumentOf, suggestGroups, suggestRoles } from "./pickers";

const kMostWithoutPreview = 20;

function Preview(props: { title: string; answer: Answer; onEnd: (agreed: boolean) => void }) {
    const lines = (props.answer.outcomes ?? []).map(outcome => outcome.message);
    return (
        <Dialog title={props.title} onClose={() => props.onEnd(false)}>
            <p>{t("preview")}</p>
            <Lines label={t("preview")} lines={lines} />
            <div class="buttons">
                <button onClick={() => props.onEnd(false)}>{t("cancel")}</button>
                <button class="main" onClick={() => props.onEnd(true)}>
                    {t("goon")}
                </button>
            </div>
        </Dialog>
    );
}

/** Runs a command on people; with many, shows first what it would do. @return whether it was done. */
export async function changePeople(command: string, people: Selection, others: Values = {}): Promise<boolean> {
    const values = { ...others, USER: people.argument() };
    if (people.count > kMostWithoutPreview) {
        const answer = await run(command, values, { dry_run: true });
        const isAgreed = await new Promise<boolean>(resolve =>
            openDialog(close => (
                <Preview
                    title={counted("people.count", people.count)}
                    answer={answer}
                    onEnd={agreed => {
                        close();
                        resolve(agreed);
                    }}
                />
            )),
        );
        if (!isAgreed) {
            return false;
        }
    }
    return (await change(command, values)) !== null;
}

/** The same, where a toast is enough for what goes wrong. */
export const changePeopleOrSay = (command: string, people: Selection, others: Values = {}) =>
    changePeople(command, people, others).catch(error => {
        toast(sentence(error));
        return false;
    });

/** What is deleted is shown in any case. */
export const deletePeople = (people: Selection) => changeOrSay("user/delete", { USER: people.argument() });

const group = (name: string, label: string, isRequired: boolean, value = "") => ({
    name,
    label,
    value,
    required: isRequired,
    suggest: suggestGroups,
});

/** @param from  the group that they leave where they are in several; empty: not known. */
export const askMove = (people: Selection, from: string) =>
    askFor(
        t("people.moveto", { people: counted("people.count", people.count) }),
        [group("to", t("group.path"), true), group("from", t("people.from"), false, from)],
        t("move"),
        async values =>
            changePeople("user/move", people, {
                TO: values["to"] ?? "",
                ...(values["from"] ? { from: values["from"] } : {}),
            }),
    );
export const askAdd = (people: Selection) =>
    askFor(t("people.addto"), [group("group", t("group.path"), true)], t("ok"), async values =>
        changePeople("member/add", people, { GROUP: values["group"] ?? "" }),
    );
export const askRole = (people: Selection, verb: "add" | "remove") =>
    askFor(
        t(`people.role.${verb}`),
        [{ name: "role", label: t("role"), required: true, suggest: suggestRoles }],
        t("ok"),
        async values => changePeople(`role/${verb}`, people, { ROLE: values["role"] ?? "" }),
    );

// ---- Dragged, or cut ------------------------------------------------------------------------------------------------

/** @param from  the place whose own members the people are shown as, or under which the group is; empty: none. */
type Carried = { people: Selection; from: string } | { group: Place; from: string };

let carried: Carried | undefined;

export const carry = (what: Carried | undefined) => {
    carried = what;
};
export const cut = (what: Carried) => {
    carry(what);
    toast(t("cut", { what: "group" in what ? what.group.name : counted("people.count", what.people.count) }));
};
/** Whether what is carried can be put into a place. */
export const canDrop = (place: Place | undefined) =>
    carried !== undefined &&
    place !== undefined &&
    place.key !== "nowhere" &&
    ("group" in carried
        ? may("group/move") && carried.group.key !== place.key
        : may("user/move") && place.key.startsWith("group:"));

/** Asks, and puts what is carried into a place. @param isCopy  people stay where they are, too. */
export function drop(place: Place, isCopy: boolean): void {
    if (!carried || !canDrop(place)) {
        return;
    }
    const what = carried;
    const to = place.name;
    const from: Values = /^(view|group):/.test(what.from) ? { from: argumentOf(what.from) } : {};
    if ("group" in what) {
        askFor(t("drop.group", { name: what.group.name, to }), [], t("move"), async () => {
            const isElsewhere = what.group.places > 1;
            const values = { GROUP: argumentOf(what.group.key), PARENT: argumentOf(place.key) };
            return (await change("group/move", isElsewhere ? { ...values, ...from } : values)) !== null;
        });
        return;
    }
    const people = counted("people.count", what.people.count);
    if (isCopy) {
        askFor(t("drop.add", { people, to }), [], t("add"), async () =>
            changePeople("member/add", what.people, { GROUP: argumentOf(place.key) }),
        );
    } else {
        askFor(t("drop.move", { people, to }), [], t("move"), async () =>
            changePeople("user/move", what.people, { TO: argumentOf(place.key), ...from }),
        );
    }
}

