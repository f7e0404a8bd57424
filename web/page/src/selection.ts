// Whom a list has selected: some, or all but some, who need not be loaded.
import type { Chosen } from "./api";

export class Selection {
    private constructor(
        private readonly ids: ReadonlySet<number>,
        private readonly all?: { result: string; total: number },
    ) {}

    static readonly nobody = new Selection(new Set());
    static of = (ids: Iterable<number>) => new Selection(new Set(ids));
    /** Everybody of a list that the server keeps. */
    static allOf = (result: string, total: number) => new Selection(new Set(), { result, total });

    get count(): number {
        return this.all ? this.all.total - this.ids.size : this.ids.size;
    }
    has(id: number): boolean {
        return this.ids.has(id) !== (this.all !== undefined);
    }
    with(ids: Iterable<number>, isOn: boolean): Selection {
        const after = new Set(this.ids);
        for (const id of ids) {
            isOn === (this.all === undefined) ? after.add(id) : after.delete(id);
        }
        return new Selection(after, this.all);
    }
    /** As commands take it. @param prefix  "user:" where a command takes other things than users too. */
    argument(prefix = ""): string[] | Chosen {
        return this.all ? { result: this.all.result, except: [...this.ids] } : [...this.ids].map(id => `${prefix}id:${id}`);
    }
}
